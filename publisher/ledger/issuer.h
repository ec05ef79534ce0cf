// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakcrypto/ed25519.h>

#include <QString>
#include <QVector>

namespace nk::pm::publisher {

/// What the trust key says about one issuer: this key may sign packages.
struct IssuerRecord
{
    QByteArray publicKey; ///< DER, 44 bytes
    QByteArray signature; ///< by the trust key over publicKey, 64 bytes
    QString firstLabel;   ///< for the reader's log; not signed
    QString secondLabel;

    /// The record of \a issuer, signed with the private half of the trust key.
    static IssuerRecord issue(
        const nk::crypto::ed25519::PublicKey &issuer, const QString &firstLabel,
        const QString &secondLabel, const nk::crypto::ed25519::PrivateKey &trustKey);

    /// The record in the form of a file that people may look at, and back. A \a json that is no
    /// such record gives one without a public key, and says why in \a fault.
    QByteArray toJson() const;
    static IssuerRecord fromJson(const QByteArray &json, QString *fault);

    /// Why a ledger can't hold \a label; empty if it can.
    static QString labelFault(const QString &label);

    bool isSignedBy(const nk::crypto::ed25519::PublicKey &trustKey) const;
};

/// Who signs packages of one type and its sub-types.
struct Issuer
{
    QString type; ///< empty for all that no other issuer has
    nk::crypto::ed25519::PrivateKey key;
    IssuerRecord record;
};

/// The place in \a issuers of the one that signs packages of \a type: the one with the longest type
/// that \a type is or is below. -1 if there is none.
int issuerFor(const QVector<Issuer> &issuers, const QString &type);

} // namespace nk::pm::publisher

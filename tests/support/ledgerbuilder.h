// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakcrypto/ed25519.h>

#include <QMap>
#include <QPair>
#include <QStringList>
#include <QVector>

namespace nk::pm::test {

/// Fields of a ledger.
QByteArray u8(int value);
QByteArray u16(int value);
QByteArray u32(quint32 value);
QByteArray ledgerString(const QByteArray &bytes);
/// 28 bytes for the file content \a content.
QByteArray fileHash(const QByteArray &content);

/// Identifier and payload.
using LedgerSegment = QPair<QByteArray, QByteArray>;
/// A ledger of \a segments, laid out in this order and named in the order of \a table, or in the
/// same if that is empty; \a gaps are put in front of the segments, by their index.
QByteArray ledgerFile(
    const QVector<LedgerSegment> &segments, const QVector<QByteArray> &table = {},
    const QMap<int, QByteArray> &gaps = {});

/// Makes ledgers for tests: their own trust key, issuers with keys of their own, signed packages,
/// and records that no publisher would write. It shares no code with the publisher.
class LedgerBuilder
{
public:
    using PrivateKey = nk::crypto::ed25519::PrivateKey;
    using PublicKey = nk::crypto::ed25519::PublicKey;
    /// Name to content.
    using Files = QMap<QString, QByteArray>;
    /// Language index and display strings; a plural stands behind a NUL.
    using Group = QPair<int, QVector<QByteArray>>;

    /// Issuers are signed with \a trustKey.
    explicit LedgerBuilder(const PrivateKey &trustKey = PrivateKey::generate());

    PublicKey trustKey() const { return m_trustKey.publicKey(); }

    /// An issuer with a new key. Its index is the number of those before it; so for all others.
    LedgerBuilder &addIssuer(const QByteArray &firstLabel, const QByteArray &secondLabel = {});
    LedgerBuilder &addIssuerSignedBy(
        const PrivateKey &signer, const QByteArray &firstLabel, const QByteArray &secondLabel);
    /// An issuer whose key field holds \a keyField, properly signed.
    LedgerBuilder &addIssuerWithKeyField(
        const QByteArray &keyField, const QByteArray &firstLabel, const QByteArray &secondLabel);
    LedgerBuilder &addLanguage(const QByteArray &language);
    LedgerBuilder &addKeyword(int type, const QByteArray &id, const QVector<Group> &groups);
    /// A package signed by issuer \a issuer; its type is added if need be.
    LedgerBuilder &addPackage(
        const QByteArray &id, const QByteArray &type = "model", const QByteArray &manifest = "{}",
        const Files &files = {}, int issuer = 0);
    LedgerBuilder &addLink(int type, int endKinds, quint32 from, quint32 to);

    LedgerBuilder &addRawPackage(const QByteArray &record);

    int typeIndex(const QByteArray &type) const { return m_types.indexOf(type); }
    /// A package record as addPackage() adds it.
    QByteArray packageRecord(
        const QByteArray &id, const QByteArray &type, const QByteArray &manifest,
        const Files &files, int issuer) const;

    /// The four segments in their usual order.
    QVector<LedgerSegment> segments() const;
    QByteArray build() const { return ledgerFile(segments()); }

private:
    void addIssuerRecord(
        const PrivateKey &signer, const PrivateKey &key, const QByteArray &keyField,
        const QByteArray &firstLabel, const QByteArray &secondLabel);

    PrivateKey m_trustKey;
    QVector<PrivateKey> m_issuerKeys;
    QVector<QByteArray> m_issuers;
    QVector<QByteArray> m_languages;
    QVector<QByteArray> m_keywords;
    QVector<QByteArray> m_types;
    QVector<QByteArray> m_packages;
    QVector<QByteArray> m_links;
};

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgertables.h"

#include <norvakcrypto/ed25519.h>

namespace nk::pm {

class VerifiedSignatures;

/// Which issuers the trust key vouches for, checked in the order of the table up to the first
/// fault.
struct IssuerVerification
{
    enum Fault { NoFault, NotSigned, UnusableKey };

    Fault fault = NoFault;
    int signedCount =
        0; ///< issuers whose signature is valid, the one with an unusable key included
    /// The issuers' keys, by issuer index; a fault is the next issuer's.
    QVector<nk::crypto::ed25519::PublicKey> keys;
};

NK_PM_EXPORT IssuerVerification
verifyIssuers(const QVector<LedgerIssuer> &issuers, const nk::crypto::ed25519::PublicKey &trustKey);

/// True if each package of \a tables carries a valid signature by its issuer's key of \a
/// issuerKeys.
///
/// What \a known holds isn't checked again, and what is found valid goes there, whatever the
/// result. Blocks until threads of the global pool have done the work; may be called from one of
/// them, whose place another takes meanwhile.
NK_PM_EXPORT bool verifyPackages(
    const LedgerTables &tables, const QVector<nk::crypto::ed25519::PublicKey> &issuerKeys,
    VerifiedSignatures &known);

} // namespace nk::pm

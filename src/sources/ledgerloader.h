// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgertables.h"

#include <norvakcrypto/ed25519.h>

#include <QLoggingCategory>

namespace nk::pm {

class VerifiedSignatures;

/// What the readers of a ledger write: "norvak.packageserver.ledger", from info up by default.
Q_DECLARE_LOGGING_CATEGORY(ledgerLog)

/// Parses and verifies \a ledger whole and logs how that went. All or nothing: when anything is
/// wrong the result has no keywords, packages and links. It refers to the bytes of \a ledger, which
/// must stay unchanged for its whole life.
///
/// \a trustKey signs the issuers; \a known as for verifyPackages(). Blocks while signatures are
/// checked on the global thread pool.
NK_PM_EXPORT LedgerTables loadLedger(
    const QByteArray &ledger, const nk::crypto::ed25519::PublicKey &trustKey,
    VerifiedSignatures &known);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/problems.h"
#include "catalogue/progress.h"
#include "ledger/ledgerreading.h"

#include <norvakcrypto/ed25519.h>

namespace nk::pm::publisher {

/// Everything that is wrong with \a ledger, each with the record it is about in Problem::file.
///
/// A reader refuses a ledger whole at its first fault and says little; this looks at all records.
/// An error is what makes readers with \a trustKey refuse the ledger, or pass a record over.
/// Works on all cores and blocks until done.
Problems verifyLedger(
    const LedgerReading &ledger, const crypto::ed25519::PublicKey &trustKey, Progress &progress);

/// What is wrong with the files below \a publication: those that \a tables names and that are
/// missing or hold something else are errors. Works on all cores and blocks until
/// done.
Problems verifyFiles(const LedgerTables &tables, const QString &publication, Progress &progress);

} // namespace nk::pm::publisher

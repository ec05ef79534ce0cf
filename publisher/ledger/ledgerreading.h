// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgerstructure.h"
#include "sources/ledgertables.h"

namespace nk::pm::publisher {

/// A ledger as the library reads it, without any check of a signature. Refers to the ledger's
/// bytes.
struct LedgerReading
{
    LedgerStructure structure;
    LedgerTables tables;
    QString fault; ///< why a client would refuse the bytes, up to signatures; empty if it wouldn't
};

LedgerReading readLedger(const QByteArray &ledger);

/// The link's ends as identifiers; null where an index is out of range.
LedgerString linkStart(const LedgerTables &tables, const LedgerLink &link);
LedgerString linkEnd(const LedgerTables &tables, const LedgerLink &link);

} // namespace nk::pm::publisher

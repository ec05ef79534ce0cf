// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ledger/ledgerreading.h"

#include <QStringList>

namespace nk::pm::publisher {

/// A record that both ledgers have, and in what it differs.
struct ChangedRecord
{
    QString id;
    QStringList changes; ///< "type", "manifest: title", "new file: a.png" and so on
};

/// Records of one kind, each list in the order of identifiers.
struct RecordDiff
{
    QStringList added;
    QStringList removed;
    QVector<ChangedRecord> changed;

    bool isEmpty() const { return added.isEmpty() && removed.isEmpty() && changed.isEmpty(); }
};

struct LedgerDiff
{
    RecordDiff issuers; ///< by labels
    RecordDiff packages;
    RecordDiff keywords;
    RecordDiff links; ///< "from type to"; never changed

    bool isEmpty() const
    {
        return issuers.isEmpty() && packages.isEmpty() && keywords.isEmpty() && links.isEmpty();
    }
};

/// How to get from ledger \a before to ledger \a after, as their readers see it: the order of
/// records and tables doesn't count.
LedgerDiff diffLedgers(const LedgerTables &before, const LedgerTables &after);

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgercursor.h"

#include <norvakpackagemanager_export.h>

#include <QVector>

#include <optional>

namespace nk::pm {

/// The lower-case hexadecimal text of the 28 bytes at \a hash: the file's key in the store and in
/// addresses, and what is signed.
NK_PM_EXPORT QByteArray fileDigest(const char *hash);

/// One file of a package.
struct LedgerFile
{
    const char *hash = nullptr; ///< 28 bytes
    LedgerString name;
};

/// The file records of one package, read in place: a view, valid as long as the ledger's bytes.
///
/// Where several records have one name, the last of them counts.
class NK_PM_EXPORT LedgerFiles
{
public:
    LedgerFiles() = default;

    /// The next \a count records; nothing if one of them can't be read or lacks its hash.
    static std::optional<LedgerFiles> read(LedgerCursor &cursor, int count);

    /// The hash of the file with this name, null if there is none. Walks the records.
    const char *hashOf(const QByteArray &name) const;
    /// Whether a file has this hash. Walks the records.
    bool hasHash(const QByteArray &hash) const;
    /// The files, each name once, in the order of the names' bytes.
    QVector<LedgerFile> sortedUnique() const;

private:
    const char *m_records = nullptr;
    int m_count = 0;
};

} // namespace nk::pm

Q_DECLARE_TYPEINFO(nk::pm::LedgerFile, Q_PRIMITIVE_TYPE);

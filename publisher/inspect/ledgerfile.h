// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

namespace nk::pm::publisher {

/// A ledger taken from a file.
struct LedgerFile
{
    QByteArray bytes;
    QString publication; ///< the publication's directory, if the path named one
    QString fault;       ///< why there are no bytes; empty if there are
};

/// Reads the ledger at \a path: the directory of a publication, a ledger file, or the file in which
/// a client keeps a ledger with its ETag. Whether the bytes are a sound ledger isn't asked.
LedgerFile openLedger(const QString &path);

} // namespace nk::pm::publisher

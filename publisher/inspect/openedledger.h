// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QString>

namespace nk::pm::publisher {

/// What came of opening a ledger by a path.
struct OpenedLedger
{
    QByteArray bytes;
    QString publication; ///< the publication's directory, if the path named one
    QString fault;       ///< why there are no bytes; empty if there are
};

/// Reads the ledger at \a path: the directory of a publication, a ledger file, or the file in which
/// a client keeps a ledger with its ETag. Whether the bytes are a sound ledger isn't asked.
OpenedLedger openLedger(const QString &path);

} // namespace nk::pm::publisher

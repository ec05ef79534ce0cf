// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/storecensus.h"

#include <QCryptographicHash>

namespace nk::pm {

/// A damaged file, in the store or moved out of it.
struct DamagedFile
{
    StoredFile file;
    bool isInStore = true;
    QStringList paths{}; ///< installed files that are links to it
};

struct StoreCheck
{
    QVector<DamagedFile> damaged; ///< by digest
    QStringList unreadable;
    QStringList unknown;
};

/// The algorithm of a hexadecimal digest; nothing if its length doesn't tell.
std::optional<QCryptographicHash::Algorithm> algorithmOf(const QString &digest);

/// Compares all files below \a directory with their digests, on all cores. Blocks; for a thread
/// that may wait for the disk.
StoreCheck checkStore(const QString &directory, CareTask &task);

/// Looks below \a roots for the installed files that are links to the \a damaged.
void findInstalled(QVector<DamagedFile> &damaged, const QStringList &roots, const CareTask &task);

} // namespace nk::pm

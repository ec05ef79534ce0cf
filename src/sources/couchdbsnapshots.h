// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace nk::pm {

/// One view response on disk.
struct CouchDBSnapshot
{
    QString etag; ///< with its quotes; empty if there is none
    QString path; ///< absolute; empty without a snapshot
    /// The temporary directory of that file alone, which goes with its last holder; null for a
    /// persisted one.
    std::shared_ptr<QTemporaryDir> directory;
};

/// The snapshot in \a directory that was modified last, of several the first found. The file's name
/// is the ETag without its quotes.
CouchDBSnapshot newestSnapshot(const QDir &directory);

/// Copies \a snapshot into \a directory under its ETag's name, or makes the file that is there the
/// newest; leaves it alone if it is the snapshot's own. Under the final name stands the whole
/// snapshot or nothing, also after a crash. An ETag that would name a file outside the directory,
/// or a hidden one, isn't persisted. Blocks for the copy, for the disk and while another process
/// persists there.
void persistSnapshot(const QDir &directory, const CouchDBSnapshot &snapshot);

} // namespace nk::pm

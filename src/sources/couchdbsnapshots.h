// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>
#include <QString>

namespace nk::pm {

/// One view response on disk: its ETag with the quotes, and the file's absolute path. Both empty
/// for none.
struct CouchDBSnapshot
{
    QString etag;
    QString path;
};

/// The snapshot in \a directory that was modified last, of several the first found. The file's name
/// is the ETag without its quotes.
CouchDBSnapshot newestSnapshot(const QDir &directory);

/// Copies \a snapshot into \a directory under its ETag's name, if there is no such file. Under the
/// final name stands the whole snapshot or nothing, also after a crash. An ETag that would name a
/// file outside the directory, or a hidden one, isn't persisted. Blocks while another process
/// persists there.
void persistSnapshot(const QDir &directory, const CouchDBSnapshot &snapshot);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>

namespace nk::pm {

struct CareTask;

// What stands in a store and in the install roots. Any thread.

/// Tells whether two paths name one file. Never true where the system doesn't say.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;

    bool operator==(const FileIdentity &other) const
    {
        return inode != 0 && inode == other.inode && device == other.device;
    }
};

inline uint qHash(const FileIdentity &identity, uint seed = 0)
{
    return ::qHash(identity.inode, seed);
}

/// A regular file, as a look at it told.
struct FileStatus
{
    FileIdentity identity;
    qint64 size = 0;
    quint64 links = 1;
    qint64 changed = 0; ///< nanoseconds since 1970: content, permissions or number of links

    bool operator==(const FileStatus &other) const
    {
        return identity == other.identity && changed == other.changed;
    }
};

/// Nothing if there is no regular file at \a path. Doesn't follow a link.
std::optional<FileStatus> fileStatus(const QString &path);

/// A file in the store's directories.
struct StoredFile
{
    QString path;
    QString digest; ///< that it has, or would have
    FileStatus status;
};

/// All files in the store's directories.
struct StoreCensus
{
    QVector<StoredFile> files;     ///< under their digests
    QVector<StoredFile> removed;   ///< damaged, moved out of the way by removedPath()
    QVector<StoredFile> leftovers; ///< of downloads
};

/// Ends early with \a task.
StoreCensus takeCensus(const QString &directory, const CareTask &task);

/// Where the file \a path goes that has been found damaged: a hidden name in the same directory,
/// which tells the digest.
QString removedPath(const QString &path, const FileStatus &status);

/// Calls \a visit for each installed file below \a roots that has several links. Ends early with
/// \a task.
void visitInstalledFiles(
    const QStringList &roots, const CareTask &task,
    const std::function<void(const QString &path, const FileStatus &status)> &visit);

} // namespace nk::pm

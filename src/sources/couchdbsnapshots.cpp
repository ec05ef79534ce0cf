// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbsnapshots.h"

#include <norvakutil/fileutils.h>

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QLockFile>

namespace nk::pm {

namespace {

// Hidden, so that a copy that a crash has left is never taken for a snapshot. Only the holder of
// the lock writes it.
const QLatin1String partialName(".partial");

bool isSafeName(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(QLatin1Char('.')) && !name.contains(QLatin1Char('/'))
           && !name.contains(QLatin1Char('\\')) && !name.contains(QChar::Null);
}

} // namespace

CouchDBSnapshot newestSnapshot(const QDir &directory)
{
    CouchDBSnapshot newest;
    QDateTime newestTime;
    QDirIterator iterator(directory.absolutePath(), QDir::Files);
    while (iterator.hasNext()) {
        iterator.next();
        const QDateTime time = iterator.fileInfo().fileTime(QFileDevice::FileModificationTime);
        if (newest.path.isEmpty() || time > newestTime) {
            newest.path = iterator.fileInfo().absoluteFilePath();
            newest.etag = QStringLiteral("\"%1\"").arg(iterator.fileName());
            newestTime = time;
        }
    }
    return newest;
}

void persistSnapshot(const QDir &directory, const CouchDBSnapshot &snapshot)
{
    QString name = snapshot.etag;
    name.remove(QLatin1Char('"'));
    if (!isSafeName(name))
        return;
    QLockFile lock(directory.absoluteFilePath(QStringLiteral(".lock")));
    lock.lock();
    if (directory.exists(name))
        return;
    const QString partial = directory.absoluteFilePath(partialName);
    QFile::remove(partial);
    if (!QFile::copy(snapshot.path, partial) || !nk::util::FileUtils::syncFile(partial)
        || !QFile::rename(partial, directory.absoluteFilePath(name)))
        QFile::remove(partial);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbsnapshots.h"

#include "sources/directoryname.h"

#include <QDateTime>
#include <QDirIterator>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>

namespace nk::pm {

namespace {

// Hidden, as is what QSaveFile writes before: a copy that a crash has left is never taken for a
// snapshot. Only the holder of the lock writes it.
const QLatin1String partialName(".partial");

bool copyWhole(const QString &from, const QString &to)
{
    QFile source(from);
    QSaveFile target(to);
    if (!source.open(QIODevice::ReadOnly) || !target.open(QIODevice::WriteOnly))
        return false;
    while (!source.atEnd()) {
        const QByteArray block = source.read(0x10000);
        if (block.isEmpty() || target.write(block) != block.size())
            return false;
    }
    return target.commit();
}

void removeRemains(QDir directory)
{
    const QStringList remains =
        directory.entryList({partialName + QLatin1Char('*')}, QDir::Files | QDir::Hidden);
    for (const QString &name : remains)
        directory.remove(name);
}

void makeNewest(const QString &path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadWrite))
        file.setFileTime(QDateTime::currentDateTime(), QFileDevice::FileModificationTime);
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
    const QString path = directory.absoluteFilePath(name);
    if (!namesEntry(name) || path == snapshot.path)
        return;
    QLockFile lock(directory.absoluteFilePath(QStringLiteral(".lock")));
    lock.lock();
    removeRemains(directory);
    const QString partial = directory.absoluteFilePath(partialName);
    if (directory.exists(name)
        || (copyWhole(snapshot.path, partial) && QFile::rename(partial, path)))
        makeNewest(path);
    else
        QFile::remove(partial);
}

} // namespace nk::pm

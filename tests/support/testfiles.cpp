// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

namespace nk::pm::test {

void writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    if (!QDir().mkpath(QFileInfo(path).path()) || !file.open(QIODevice::WriteOnly)
        || file.write(content) != content.size())
        qFatal("Failed to write %s", qPrintable(path));
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void makeLink(const QString &path, const QString &target)
{
    if (!QDir().mkpath(QFileInfo(path).path()) || !QFile::link(target, path))
        qFatal("Failed to link %s", qPrintable(path));
}

QString otherVolume()
{
    const QString candidate = "/dev/shm";
    const QFileInfo info(candidate);
    const bool usable = info.isDir() && info.isWritable();
    return usable && QStorageInfo(candidate).device() != QStorageInfo(QDir::tempPath()).device()
               ? candidate
               : QString();
}

} // namespace nk::pm::test

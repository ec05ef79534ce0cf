// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
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

QByteArray numberedContent(int number, int size)
{
    QByteArray content = "file " + QByteArray::number(number) + '\n';
    content.reserve(size);
    for (quint32 state = quint32(number) + 1; content.size() < size;)
        content += char((state = state * 1664525 + 1013904223) >> 24);
    content.truncate(size);
    return content;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList filesBelow(const QString &directory)
{
    QStringList files;
    QDirIterator it(directory, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.append(it.next());
    return files;
}

void makeOld(const QString &path, int seconds)
{
    QFile file(path);
    const auto time = QDateTime::currentDateTime().addSecs(-seconds);
    if (!file.open(QIODevice::ReadWrite)
        || !file.setFileTime(time, QFileDevice::FileModificationTime))
        qFatal("Failed to age %s", qPrintable(path));
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

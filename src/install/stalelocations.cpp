// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/stalelocations.h"

#include "closing/closingdown.h"
#include "install/logging.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLockFile>
#include <QThread>
#include <norvak/locations.h>

#include <algorithm>
#include <chrono>

namespace nk::pm {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::seconds youngest = 300s;
constexpr std::chrono::milliseconds lockTimeout = 350ms;
constexpr std::chrono::microseconds pauseAfterUnlock = 500us;

bool isOld(const QFileInfo &entry, const QDateTime &now)
{
    // Not every file system keeps the time of birth.
    const QDateTime birth = entry.birthTime();
    const QDateTime created = birth.isValid() ? birth : entry.metadataChangeTime();
    return created.secsTo(now) > youngest.count();
}

/// QDir::removeRecursively(), but ends early with the application: a root may have held a large
/// catalogue. The next sweep finds the rest.
void removeTree(const QString &path)
{
    QStringList directories{path};
    const auto everything = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    QDirIterator entries(path, everything, QDirIterator::Subdirectories);
    while (entries.hasNext() && !isClosingDown()) {
        const QString entry = entries.next();
        if (entries.fileInfo().isDir() && !entries.fileInfo().isSymLink())
            directories.append(entry);
        else
            QFile::remove(entry);
    }
    while (!directories.isEmpty() && !isClosingDown())
        QDir().rmdir(directories.takeLast());
}

/// What a link in here leads to is not ours.
QFileInfoList locationsBelow(const QString &parent)
{
    QFileInfoList entries =
        QDir(parent).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Unsorted);
    const auto isLink = [](const QFileInfo &entry) { return entry.isSymLink(); };
    entries.erase(std::remove_if(entries.begin(), entries.end(), isLink), entries.end());
    return entries;
}

void removeIfUnused(const QString &path)
{
    QLockFile lock(path + QLatin1String("/.lock"));
    if (!lock.tryLock(int(lockTimeout.count())))
        return;
    lock.unlock();
    QThread::usleep(pauseAfterUnlock.count());
    removeTree(path);
    qCDebug(lcInstall) << "Removing stale install location" << path;
}

} // namespace

QString installRoots()
{
    return QDir::cleanPath(
        nk::Locations::dataLocation().absoluteFilePath(QStringLiteral("packages/install")));
}

void removeStaleLocations()
{
    sweepLocations(installRoots(), QDateTime::currentDateTimeUtc());
}

QStringList installLocations()
{
    QStringList paths;
    for (const QFileInfo &entry : locationsBelow(installRoots()))
        paths.append(entry.absoluteFilePath());
    return paths;
}

QStringList usedLocations()
{
    QStringList paths;
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (const QFileInfo &entry : locationsBelow(installRoots())) {
        const QString path = entry.absoluteFilePath();
        if (!isOld(entry, now) || !QLockFile(path + QLatin1String("/.lock")).tryLock(0))
            paths.append(path);
    }
    return paths;
}

void sweepLocations(const QString &parent, const QDateTime &now)
{
    if (isClosingDown())
        return;
    for (const QFileInfo &entry : locationsBelow(parent)) {
        if (isClosingDown())
            return;
        if (isOld(entry, now))
            removeIfUnused(entry.absoluteFilePath());
    }
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storecleaning.h"

#include "install/caretask.h"
#include "install/storelock.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <chrono>

namespace nk::pm {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds patience = 5s;
constexpr std::chrono::milliseconds patienceStep = 50ms; // in which a cancelled task notices
constexpr qint64 longestHold = 5;                // milliseconds for which others may have to wait
constexpr std::chrono::microseconds pause = 2ms; // others try every 500 us

QSet<FileIdentity> linkedBelow(const QStringList &roots, const CareTask &task)
{
    QSet<FileIdentity> linked;
    visitInstalledFiles(roots, task, [&](const QString &, const FileStatus &status) {
        linked.insert(status.identity);
    });
    return linked;
}

/// What can go, in the order in which it goes.
QVector<StoredFile> victims(
    StoreCensus census, const QStringList &roots, qint64 maximumBytes, const CareTask &task)
{
    QVector<StoredFile> chosen = census.leftovers;
    for (const StoredFile &file : qAsConst(census.removed)) {
        if (file.status.links <= 1)
            chosen.append(file);
    }
    // A new link changes that time as well, an old one that is swept too: it tells of use.
    std::sort(census.files.begin(), census.files.end(), [](const auto &a, const auto &b) {
        return a.status.changed < b.status.changed;
    });
    qint64 bytes = 0;
    for (const StoredFile &file : qAsConst(census.files))
        bytes += file.status.size;
    const QSet<FileIdentity> used = linkedBelow(roots, task);
    for (const StoredFile &file : qAsConst(census.files)) {
        if (bytes <= maximumBytes)
            break;
        if (file.status.links > 1 && used.contains(file.status.identity))
            continue;
        chosen.append(file);
        bytes -= file.status.size;
    }
    return chosen;
}

std::unique_ptr<StoreLock> lockAlone(const QString &path, const CareTask &task)
{
    std::unique_ptr<StoreLock> lock;
    for (auto waited = 0ms; !lock && waited < patience && task.goesOn(); waited += patienceStep)
        lock = StoreLock::take(path, StoreLock::Exclusive, patienceStep);
    return lock;
}

} // namespace

StoreUsage usageOf(const StoreCensus &census, const QStringList &roots, const CareTask &task)
{
    const QSet<FileIdentity> used = linkedBelow(roots, task);
    StoreUsage usage;
    usage.files = census.files.size();
    for (const StoredFile &file : census.files) {
        usage.bytes += file.status.size;
        if (file.status.links > 1 && used.contains(file.status.identity)) {
            ++usage.usedFiles;
            usage.usedBytes += file.status.size;
        }
    }
    for (const StoredFile &file : census.leftovers + census.removed) {
        ++usage.leftoverFiles;
        usage.leftoverBytes += file.status.size;
    }
    return usage;
}

namespace {

/// Removes files from \a file on, for as long as others may have to wait. Gives the next.
const StoredFile *removeSome(
    const StoredFile *file, const StoredFile *end, CareTask &task, StoreReport &report)
{
    QElapsedTimer held;
    for (held.start(); file != end && held.elapsed() < longestHold; ++file) {
        // Nobody has linked it since it was chosen.
        if (fileStatus(file->path) == file->status && QFile::remove(file->path)) {
            ++report.removedFiles;
            report.removedBytes += file->status.size;
        }
        ++task.files;
        task.bytes = report.removedBytes;
    }
    return file;
}

} // namespace

void cleanStore(
    const QString &directory, const QString &lockPath, const QStringList &roots,
    qint64 maximumBytes, CareTask &task, StoreReport &report)
{
    const QVector<StoredFile> chosen =
        victims(takeCensus(directory, task), roots, maximumBytes, task);
    task.totalFiles = chosen.size();
    const StoredFile *file = chosen.cbegin();
    while (file != chosen.cend() && task.goesOn()) {
        auto lock = lockAlone(lockPath, task);
        if (!lock) {
            report.outcome = StoreReport::Busy;
            return;
        }
        file = removeSome(file, chosen.cend(), task, report);
        lock.reset();
        QThread::usleep(pause.count());
    }
}

} // namespace nk::pm

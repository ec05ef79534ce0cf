// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storecheck.h"

#include "install/caretask.h"
#include "install/contenthash.h"

#include <QFile>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <vector>

namespace nk::pm {

namespace {

constexpr int blockSize = 256 * 1024; // bytes

enum class Verdict : char { Unread, Good, Damaged, Unreadable, Unknown };

/// One thread's tools.
class Checker
{
public:
    explicit Checker(CareTask &task)
        : m_task(task)
    {}

    Verdict check(const StoredFile &file);

private:
    Verdict compare(QFile &device, ContentHash &hash, const QByteArray &expected);

    CareTask &m_task;
    QByteArray m_block{blockSize, Qt::Uninitialized};
    ContentHash m_md5{QCryptographicHash::Md5};
    ContentHash m_sha224{QCryptographicHash::Sha224};
};

Verdict Checker::check(const StoredFile &file)
{
    const auto algorithm = algorithmOf(file.digest);
    if (!algorithm)
        return Verdict::Unknown;
    QFile device(file.path);
    if (!device.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) // gone isn't wrong
        return device.exists() ? Verdict::Unreadable : Verdict::Unread;
    ContentHash &hash = *algorithm == QCryptographicHash::Md5 ? m_md5 : m_sha224;
    return compare(device, hash, QByteArray::fromHex(file.digest.toLatin1()));
}

Verdict Checker::compare(QFile &device, ContentHash &hash, const QByteArray &expected)
{
    hash.reset();
    qint64 count = 0;
    while ((count = device.read(m_block.data(), blockSize)) > 0) {
        if (!m_task.goesOn())
            return Verdict::Unread;
        hash.addData(m_block.constData(), count);
        m_task.bytes += count;
    }
    return count == 0 && hash.result() == expected ? Verdict::Good : Verdict::Damaged;
}

/// Large files first, so that at the end no core waits long for another.
std::vector<Verdict> checkAll(QVector<StoredFile> &files, CareTask &task)
{
    std::stable_sort(files.begin(), files.end(), [](const StoredFile &a, const StoredFile &b) {
        return a.status.size > b.status.size;
    });
    std::vector<Verdict> verdicts(size_t(files.size()), Verdict::Unread);
    std::atomic_int next{0};
    const auto work = [&, end = files.size()] {
        Checker checker(task);
        for (int i = next++; i < end && task.goesOn(); i = next++) {
            verdicts[size_t(i)] = checker.check(qAsConst(files)[i]);
            ++task.files;
        }
    };
    // Neither the global pool nor the disk threads: others want to go on meanwhile.
    QThreadPool threads;
    const int helpers = QThread::idealThreadCount() - 1;
    for (int i = 0; i < helpers; ++i)
        threads.start(work);
    work();
    threads.waitForDone();
    return verdicts;
}

} // namespace

std::optional<QCryptographicHash::Algorithm> algorithmOf(const QString &digest)
{
    for (const auto algorithm : {QCryptographicHash::Md5, QCryptographicHash::Sha224}) {
        if (digest.size() == 2 * QCryptographicHash::hashLength(algorithm))
            return algorithm;
    }
    return std::nullopt;
}

StoreCheck checkStore(const QString &directory, CareTask &task)
{
    StoreCheck check;
    StoreCensus census = takeCensus(directory, task);
    qint64 bytes = 0;
    for (const StoredFile &file : qAsConst(census.files))
        bytes += file.status.size;
    task.totalFiles = census.files.size();
    task.totalBytes = bytes;
    const std::vector<Verdict> verdicts = checkAll(census.files, task);
    for (size_t i = 0; i < verdicts.size(); ++i) {
        const StoredFile &file = qAsConst(census.files)[int(i)];
        if (verdicts[i] == Verdict::Damaged)
            check.damaged.append({file});
        else if (verdicts[i] == Verdict::Unreadable)
            check.unreadable.append(file.path);
        else if (verdicts[i] == Verdict::Unknown)
            check.unknown.append(file.path);
    }
    for (const StoredFile &file : qAsConst(census.removed))
        check.damaged.append({file, false});
    std::sort(check.damaged.begin(), check.damaged.end(), [](const auto &a, const auto &b) {
        return a.file.digest < b.file.digest;
    });
    check.unreadable.sort();
    check.unknown.sort();
    return check;
}

void findInstalled(QVector<DamagedFile> &damaged, const QStringList &roots, const CareTask &task)
{
    QHash<FileIdentity, int> places;
    for (int i = 0; i < damaged.size(); ++i)
        places.insert(damaged.at(i).file.status.identity, i);
    if (places.isEmpty())
        return;
    visitInstalledFiles(roots, task, [&](const QString &path, const FileStatus &status) {
        const auto place = places.constFind(status.identity);
        if (place != places.constEnd())
            damaged[*place].paths.append(path);
    });
}

} // namespace nk::pm

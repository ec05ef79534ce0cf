// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"

#include "closing/closingdown.h"
#include "install/logging.h"
#include "install/openfiles.h"
#include "install/storelock.h"

#include <QDir>
#include <QFutureWatcher>
#include <QHash>
#include <QPointer>
#include <QQueue>
#include <QThread>
#include <QWeakPointer>
#include <QtConcurrent>
#include <norvak/locations.h>

#include <algorithm>

namespace nk::pm {

namespace {

constexpr int minDigestLength = 8;
constexpr int maxDigestLength = 128;
// The GUI thread waits that long at most; those who hold the lock alone do for a few milliseconds.
constexpr std::chrono::milliseconds holdPatience{200};

bool isHexDigit(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9'))
           || (c >= QLatin1Char('a') && c <= QLatin1Char('f'))
           || (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
}

// The second test is for another process that made the directory between the first and the attempt.
bool ensureDirectory(const QDir &parent, const QString &name)
{
    return parent.exists(name) || parent.mkdir(name) || parent.exists(name);
}

void ensureDirectories(const QDir &files)
{
    if (!files.exists() && !files.mkpath(QStringLiteral(".")))
        qFatal("Failed to access writable location %s", qPrintable(files.path()));
    const QLatin1String digits("0123456789abcdef");
    for (int i = 0; i < 256; ++i) {
        const QString name = QString(digits.at(i >> 4)) + digits.at(i & 15);
        if (!ensureDirectory(files, name)) {
            qFatal(
                "Failed to access writable location %s/%s", qPrintable(files.path()),
                qPrintable(name));
        }
    }
}

// The last holder may be a job on a pool thread.
void dispose(FileStore *store)
{
    if (store->thread() == QThread::currentThread())
        delete store;
    else
        store->deleteLater();
}

FileStore::CommitResult commitAfter(
    QFuture<FileStore::CommitResult> previous, FileStoreTarget &target)
{
    // Jobs begin in the order in which they were queued, so this waits for nobody who waits.
    previous.waitForFinished();
    if (previous.resultCount() > 0 && previous.result() == FileStoreTarget::CommitOk)
        return FileStoreTarget::CommitOk;
    return target.commit();
}

} // namespace

struct FileStorePrivate
{
    struct Waiting
    {
        QPointer<QObject> context;
        std::function<void()> turn;
    };

    explicit FileStorePrivate(FileStore *store)
        : q(store)
        , root(Locations::dataLocation().absoluteFilePath(QStringLiteral("packages")))
        , files(root.absoluteFilePath(QStringLiteral("files")))
    {}

    void targetGone();
    void giveRoom();

    FileStore *q;
    const QDir root;
    const QDir files;
    std::weak_ptr<StoreLock> lock;
    QHash<QString, QFuture<FileStore::CommitResult>> commits; // by lower-case digest
    int openTargets = 0;
    QQueue<Waiting> waiting;
};

/// A target is closed: whoever waits for that is told from the event loop, since this may be in the
/// middle of somebody's destruction.
void FileStorePrivate::targetGone()
{
    --openTargets;
    if (!waiting.isEmpty())
        QMetaObject::invokeMethod(
            q, [this] { giveRoom(); }, Qt::QueuedConnection);
}

void FileStorePrivate::giveRoom()
{
    while (!waiting.isEmpty() && q->hasRoom()) {
        const Waiting next = waiting.dequeue();
        if (next.context)
            next.turn();
    }
}

QSharedPointer<FileStore> FileStore::instance()
{
    static QWeakPointer<FileStore> current;
    QSharedPointer<FileStore> store = current.toStrongRef();
    if (!store) {
        waitForJobsAtExit();
        store.reset(new FileStore, dispose);
        current = store;
    }
    return store;
}

FileStore::FileStore()
    : d(new FileStorePrivate(this))
{
    ensureDirectories(d->files);
}

FileStore::~FileStore() = default;

bool FileStore::isValidDigest(const QString &digest)
{
    return digest.size() >= minDigestLength && digest.size() <= maxDigestLength
           && std::all_of(digest.begin(), digest.end(), isHexDigit);
}

QString FileStore::filePath(const QString &digest) const
{
    if (!isValidDigest(digest))
        return QString();
    const QString name = digest.toLower();
    return d->files.path() + QLatin1Char('/') + name.leftRef(2) + QLatin1Char('/') + name.midRef(2);
}

bool FileStore::contains(const QString &digest) const
{
    return QFile::exists(filePath(digest));
}

std::shared_ptr<StoreLock> FileStore::hold()
{
    std::shared_ptr<StoreLock> lock = d->lock.lock();
    if (!lock) {
        lock = StoreLock::take(lockPath(), StoreLock::Shared, holdPatience);
        d->lock = lock;
    }
    return lock;
}

QString FileStore::directory() const
{
    return d->files.path();
}

QString FileStore::lockPath() const
{
    return d->root.path() + QLatin1String("/.store.lock");
}

FileStoreTarget *FileStore::createTarget(
    const QString &digest, QCryptographicHash::Algorithm algorithm, StorePolicy policy)
{
    const bool hasLength = digest.size() == 2 * QCryptographicHash::hashLength(algorithm);
    if (!isValidDigest(digest) || (policy == StorePolicy::Strict && !hasLength))
        return nullptr;
    auto *target = new FileStoreTarget(digest, algorithm, filePath(digest), policy, this);
    if (!target->open(QIODevice::WriteOnly)) {
        target->deleteLater();
        return nullptr;
    }
    if (!leavesRoomForOthers(target->m_saveFile)) {
        qCCritical(lcFileStore) << "Too many open files for package storage file" << target->m_path;
        delete target;
        return nullptr;
    }
    target->m_hold = hold();
    ++d->openTargets;
    connect(target, &QObject::destroyed, this, [this] { d->targetGone(); });
    return target;
}

bool FileStore::hasRoom() const
{
    return d->openTargets < openTargetLimit();
}

void FileStore::waitForRoom(QObject *context, const std::function<void()> &turn)
{
    d->waiting.enqueue({context, turn});
}

void FileStore::prepare(const QSharedPointer<FileStoreTarget> &target)
{
    target->m_preparation = QtConcurrent::run(diskThreads(), [target] {
        if (!isClosingDown())
            target->prepareCommit();
    });
}

QFuture<FileStore::CommitResult> FileStore::commit(const QSharedPointer<FileStoreTarget> &target)
{
    target->disconnect(this); // it dies with the job, on another thread
    const QString digest = target->digest().toLower();
    const auto job = [target, previous = runningCommit(digest)] {
        if (isClosingDown())
            return FileStoreTarget::CommitFailed;
        target->m_preparation.waitForFinished();
        return commitAfter(previous, *target);
    };
    const QFuture<CommitResult> future = QtConcurrent::run(diskThreads(), job);
    d->commits.insert(digest, future);
    auto *watcher = new QFutureWatcher<CommitResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher, digest] {
        watcher->deleteLater();
        if (runningCommit(digest) == watcher->future())
            d->commits.remove(digest);
        d->targetGone();
    });
    watcher->setFuture(future);
    return future;
}

QFuture<FileStore::CommitResult> FileStore::runningCommit(const QString &digest) const
{
    return d->commits.value(digest.toLower());
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/filestoretarget.h"

#include <QCryptographicHash>
#include <QFuture>
#include <QObject>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QString>

#include <functional>
#include <memory>

namespace nk::pm {

class StoreLock;
struct FileStorePrivate;

/// The package files that came over the network, on disk, each named by the hexadecimal digest of
/// its content: "packages/files/ab/cdef..." below Locations::dataLocation().
///
/// A file under its final name is always complete, and stays until somebody asks for room. What a
/// wrong content means is a matter of storePolicy(). Several processes may fill one store. GUI
/// thread, but for filePath() and contains(), which are safe on any thread that holds the store.
class FileStore final : public QObject
{
    Q_OBJECT

public:
    using CommitResult = FileStoreTarget::CommitResult;

    /// The process-wide store. It dies with its last holder, and the next call makes a new one.
    /// Ends the process with a fatal message if the directory can't be made. GUI thread.
    static QSharedPointer<FileStore> instance();

    ~FileStore() override;

    /// Whether \a digest can name a file: from 8 to 128 hexadecimal digits, of either case. The
    /// length tells nothing of the algorithm.
    static bool isValidDigest(const QString &digest);

    /// Absolute path of the file with \a digest, whether or not it is there; empty if the digest is
    /// invalid.
    QString filePath(const QString &digest) const;

    /// Whether a file with \a digest is there.
    bool contains(const QString &digest) const;

    /// As long as somebody holds what this gives, no process removes files of the store to make
    /// room. Whoever builds on contains() does; targets do. Null where the system can't, or in the
    /// rare case that somebody who removes files has been stopped in the middle of it.
    std::shared_ptr<StoreLock> hold();
    /// Absolute paths of the directory of the files and of the lock's file. Any thread.
    QString directory() const;
    QString lockPath() const;

    /// A new, open target for a file whose content has \a digest by \a algorithm; null if the
    /// digest is invalid, for a strict policy by its length too, the file can't be opened or the
    /// process has hardly a file descriptor left. Child of the store, until the caller gives it
    /// another parent.
    FileStoreTarget *createTarget(
        const QString &digest, QCryptographicHash::Algorithm algorithm,
        StorePolicy policy = storePolicy());

    /// Whether another target leaves the process enough file descriptors for everything else. Who
    /// may want many targets asks before each; createTarget() itself doesn't.
    bool hasRoom() const;
    /// Calls \a turn when there is room again, for each waiting in the order of these calls; never
    /// if \a context is gone by then.
    void waitForRoom(QObject *context, const std::function<void()> &turn);

    /// Has a disk thread begin with what commit() will have to do, once \a target, which has no
    /// parent, has all its content. Optional.
    static void prepare(const QSharedPointer<FileStoreTarget> &target);

    /// Commits \a target, which has no parent and is let go of by the caller, on a disk thread. The
    /// job runs to its end, whoever is destroyed meanwhile; at the end of the application those
    /// that haven't begun fail. While a digest is being committed, a second target for it waits,
    /// and is dropped if the first was good.
    QFuture<CommitResult> commit(const QSharedPointer<FileStoreTarget> &target);
    /// The commit of the file with \a digest that is under way: the file needn't be downloaded
    /// again. A canceled future if there is none.
    QFuture<CommitResult> runningCommit(const QString &digest) const;

private:
    FileStore();
    QScopedPointer<FileStorePrivate> d;
};

} // namespace nk::pm

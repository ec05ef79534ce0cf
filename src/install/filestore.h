// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QCryptographicHash>
#include <QIODevice>
#include <QObject>
#include <QSaveFile>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QString>

class QThreadPool;

namespace nk::pm {

class FileStoreTarget;
struct FileStorePrivate;

/// The package files that came over the network, on disk, each named by the hexadecimal digest of
/// its content: "packages/files/ab/cdef..." below Locations::dataLocation().
///
/// A file under its final name is always complete, and stays for good. Several processes may fill
/// one store. GUI thread, but for the const operations, which are safe on any thread that holds the
/// store.
class FileStore final : public QObject
{
    Q_OBJECT

public:
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

    /// A new, open target for a file whose content has \a digest by \a algorithm; null if the
    /// digest is invalid, the file can't be opened or too many are open already. Child of the
    /// store, until the caller gives it another parent.
    FileStoreTarget *createTarget(const QString &digest, QCryptographicHash::Algorithm algorithm);

    /// Threads that may wait for the disk, which those of the global pool had better not: it has as
    /// many as there are processors. They live as long as the store.
    QThreadPool *diskThreads() const;

private:
    FileStore();
    QScopedPointer<FileStorePrivate> d;
};

/// The write side of one file of the store: takes its content in order, and puts it in place with
/// commit(). A target that is destroyed without that leaves no trace. GUI thread, but for what says
/// otherwise.
class FileStoreTarget final : public QIODevice
{
    Q_OBJECT

public:
    enum CommitResult {
        CommitOk = 0,           ///< the file is in place with the right content
        CommitHashMismatch = 1, ///< the file is in place, and its content doesn't match the digest
        CommitFailed = 2,       ///< the file couldn't be put in place or read back
    };
    Q_ENUM(CommitResult)

    /// A closed target for \a path, where content with \a digest (hexadecimal) belongs.
    FileStoreTarget(
        const QString &digest, QCryptographicHash::Algorithm algorithm, const QString &path,
        QObject *parent);
    ~FileStoreTarget() override;

    bool isSequential() const override;
    /// Opens for writing only. A failure is logged.
    bool open(OpenMode mode) override;
    qint64 pos() const override;
    qint64 size() const override;
    /// Moves in the file alone: the running digest takes no notice, and commit() then goes by what
    /// stands on disk.
    bool seek(qint64 position) override;
    bool reset() override;

    /// Does now what commit() would else spend its time on: digests what is left and lets the
    /// system begin to write the content to the disk. Optional; once all content is written. Any
    /// thread, as long as no other one touches the target.
    void prepareCommit();

    /// Puts the file in place and forces it to the disk, replacing one that is there already.
    /// Blocks until the device has answered. Call once; any thread, as above.
    CommitResult commit();

protected:
    qint64 readData(char *data, qint64 maxSize) override;
    qint64 writeData(const char *data, qint64 size) override;

private:
    friend class FileStore;
    bool commitFile();
    CommitResult commitUnproven(const QByteArray &expected);

    const QString m_digest;
    QCryptographicHash m_hash;
    QSaveFile m_saveFile;
    QByteArray m_lag;   // written, but not hashed yet
    qint64 m_dirty = 0; // bytes since the last writeback was begun
};

} // namespace nk::pm

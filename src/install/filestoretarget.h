// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/contenthash.h"
#include "install/storepolicy.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <QFuture>
#include <QIODevice>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace nk::pm {

class StoreLock;

/// The write side of one file of the store: takes its content in order, and puts it in place with
/// commit(). A target that is destroyed without that leaves no trace. GUI thread, but for what says
/// otherwise and for its destruction.
class FileStoreTarget final : public QIODevice
{
    Q_OBJECT

public:
    enum CommitResult {
        CommitOk = 0,           ///< the file is in place with the right content
        CommitHashMismatch = 1, ///< the content doesn't match the digest; the file is in place all
                                ///< the same if the policy is lenient
        CommitFailed = 2,       ///< the file couldn't be put in place or read back
    };
    Q_ENUM(CommitResult)

    /// A closed target for \a path, where content with \a digest (hexadecimal) belongs.
    FileStoreTarget(
        const QString &digest, QCryptographicHash::Algorithm algorithm, const QString &path,
        StorePolicy policy, QObject *parent);
    ~FileStoreTarget() override;

    /// As given to the constructor.
    QString digest() const { return m_digest; }

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
    CommitResult commitStrictly(const QByteArray &expected);
    CommitResult commitUnproven(const QByteArray &expected);

    const QString m_digest;
    const QString m_path;
    const StorePolicy m_policy;
    ContentHash m_hash;
    std::shared_ptr<StoreLock> m_hold; // null for a target that no store made
    bool m_isInOrder = true;           // or else m_hash isn't the content's
    QSaveFile m_saveFile;              // under a hidden name beside m_path
    QFuture<void> m_preparation;       // the job of FileStore::prepare(), if there is one
    QByteArray m_lag;                  // written, but not hashed yet
    qint64 m_dirty = 0;                // bytes since the last writeback was begun
};

} // namespace nk::pm

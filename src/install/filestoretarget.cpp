// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestoretarget.h"

#include "install/filecopy.h"
#include "install/logging.h"
#include "install/writeback.h"

#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <norvakutil/fileutils.h>

namespace nk::pm {

namespace {

constexpr int hashBlockSize = 64 * 1024; // bytes
// bytes that a target leaves in the cache at most before it has the system write them to the disk
constexpr qint64 writebackStep = 8 * 1024 * 1024;

/// Beside \a path, hidden, and nobody else's. A QSaveFile of \a path itself would refuse to open
/// when another process has put the file there, read-only, in the meantime.
QString stagingPath(const QString &path)
{
    const QFileInfo file(path);
    const quint64 number = QRandomGenerator::global()->generate64();
    return QStringLiteral("%1/.%2.%3.part").arg(file.path(), file.fileName()).arg(number, 0, 16);
}

} // namespace

FileStoreTarget::FileStoreTarget(
    const QString &digest, QCryptographicHash::Algorithm algorithm, const QString &path,
    StorePolicy policy, QObject *parent)
    : QIODevice(parent)
    , m_digest(digest)
    , m_path(path)
    , m_policy(policy)
    , m_hash(algorithm)
    , m_saveFile(stagingPath(path))
{
    m_lag.reserve(hashBlockSize);
}

FileStoreTarget::~FileStoreTarget() = default;

bool FileStoreTarget::isSequential() const
{
    return m_saveFile.isSequential();
}

bool FileStoreTarget::open(OpenMode mode)
{
    if (mode & ReadOnly || !(mode & WriteOnly))
        return false;
    QIODevice::open(mode);
    if (m_saveFile.open(mode))
        return true;
    qCCritical(lcFileStore) << "Failed to open package storage file" << m_path
                            << int(m_saveFile.error()) << m_saveFile.errorString();
    return false;
}

qint64 FileStoreTarget::pos() const
{
    return m_saveFile.pos();
}

qint64 FileStoreTarget::size() const
{
    return m_saveFile.size();
}

bool FileStoreTarget::seek(qint64 position)
{
    m_isInOrder = m_isInOrder && position == pos();
    return m_saveFile.seek(position);
}

bool FileStoreTarget::reset()
{
    if (!m_saveFile.reset())
        return false;
    m_hash.reset();
    m_isInOrder = false;
    return true;
}

qint64 FileStoreTarget::readData(char *, qint64)
{
    return -1;
}

// The digest runs a block behind the file, so that it is fed whole blocks however small the
// network's pieces are.
qint64 FileStoreTarget::writeData(const char *data, qint64 size)
{
    m_lag.append(data, int(size));
    if (m_lag.size() > hashBlockSize) {
        m_hash.addData(m_lag.constData(), hashBlockSize);
        m_lag.remove(0, hashBlockSize);
    }
    const qint64 written = m_saveFile.write(data, size);
    if (written != size)
        m_saveFile.cancelWriting(); // a writer that doesn't look must not commit a file with a gap
    m_dirty += qMax(written, qint64(0));
    if (m_dirty >= writebackStep) {
        startWriteback(m_saveFile);
        m_dirty = 0;
    }
    return written;
}

void FileStoreTarget::prepareCommit()
{
    startWriteback(m_saveFile);
    m_hash.addData(m_lag);
    m_lag.clear();
}

// QSaveFile::commit() of Qt 5.15 puts a file in place whose last block didn't fit on the disk: it
// passes over the failure of its own flush.
bool FileStoreTarget::commitFile()
{
    if (!m_saveFile.flush())
        m_saveFile.cancelWriting();
    if (!m_saveFile.commit())
        return false;
    if (!moveOver(m_saveFile.fileName(), m_path)) {
        QFile::remove(m_saveFile.fileName());
        return false;
    }
    nk::util::FileUtils::syncFile(m_path);
    return true;
}

FileStoreTarget::CommitResult FileStoreTarget::commit()
{
    const QByteArray expected = QByteArray::fromHex(m_digest.toLatin1());
    m_hash.addData(m_lag);
    m_lag.clear();
    if (m_policy == StorePolicy::Strict)
        return commitStrictly(expected);
    if (m_hash.result() != expected)
        return commitUnproven(expected);
    return commitFile() ? CommitOk : CommitFailed;
}

FileStoreTarget::CommitResult FileStoreTarget::commitStrictly(const QByteArray &expected)
{
    if (!m_isInOrder || m_hash.result() != expected) {
        QFile written; // it has no name yet
        if (!m_saveFile.flush() || !written.open(m_saveFile.handle(), QIODevice::ReadOnly)
            || !written.seek(0))
            return CommitFailed;
        m_hash.reset();
        if (!m_hash.addData(&written))
            return CommitFailed;
        if (m_hash.result() != expected)
            return CommitHashMismatch;
    }
#ifdef Q_OS_UNIX // elsewhere a read-only file can't be removed
    m_saveFile.setPermissions(
        QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther);
#endif
    return commitFile() ? CommitOk : CommitFailed;
}

// The running digest is wrong where the writer moved about in the file. What stands on disk
// decides.
FileStoreTarget::CommitResult FileStoreTarget::commitUnproven(const QByteArray &expected)
{
    m_hash.reset();
    if (!commitFile())
        return CommitFailed;
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly)) {
        file.remove();
        return CommitFailed;
    }
    if (!m_hash.addData(&file))
        return CommitFailed;
    return m_hash.result() == expected ? CommitOk : CommitHashMismatch;
}

} // namespace nk::pm

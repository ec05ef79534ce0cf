// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestoretarget.h"

#include "install/logging.h"
#include "install/writeback.h"

#include <QFile>
#include <norvakutil/fileutils.h>

namespace nk::pm {

namespace {

constexpr int hashBlockSize = 64 * 1024; // bytes
// bytes that a target leaves in the cache at most before it has the system write them to the disk
constexpr qint64 writebackStep = 8 * 1024 * 1024;

} // namespace

FileStoreTarget::FileStoreTarget(
    const QString &digest, QCryptographicHash::Algorithm algorithm, const QString &path,
    QObject *parent)
    : QIODevice(parent)
    , m_digest(digest)
    , m_hash(algorithm)
    , m_saveFile(path)
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
    qCCritical(lcFileStore) << "Failed to open package storage file" << m_saveFile.fileName()
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
    return m_saveFile.seek(position);
}

bool FileStoreTarget::reset()
{
    if (!m_saveFile.reset())
        return false;
    m_hash.reset();
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
    return m_saveFile.commit();
}

FileStoreTarget::CommitResult FileStoreTarget::commit()
{
    const QByteArray expected = QByteArray::fromHex(m_digest.toLatin1());
    m_hash.addData(m_lag);
    m_lag.clear();
    if (m_hash.result() != expected)
        return commitUnproven(expected);
    const bool committed = commitFile();
    nk::util::FileUtils::syncFile(m_saveFile.fileName());
    return committed ? CommitOk : CommitFailed;
}

// The running digest is wrong where the writer moved about in the file. What stands on disk
// decides.
FileStoreTarget::CommitResult FileStoreTarget::commitUnproven(const QByteArray &expected)
{
    m_hash.reset();
    if (!commitFile())
        return CommitFailed;
    nk::util::FileUtils::syncFile(m_saveFile.fileName());
    QFile file(m_saveFile.fileName());
    if (!file.open(QIODevice::ReadOnly)) {
        file.remove();
        return CommitFailed;
    }
    if (!m_hash.addData(&file))
        return CommitFailed;
    file.close();
    return m_hash.result() == expected ? CommitOk : CommitHashMismatch;
}

} // namespace nk::pm

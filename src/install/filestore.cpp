// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"

#include "install/logging.h"
#include "install/openfilelimit.h"
#include "install/writeback.h"

#include <QDir>
#include <QThread>
#include <QThreadPool>
#include <QWeakPointer>
#include <norvak/locations.h>
#include <norvakutil/fileutils.h>

#include <algorithm>

namespace nk::pm {

namespace {

constexpr int minDigestLength = 8;
constexpr int maxDigestLength = 128;
constexpr int hashBlockSize = 64 * 1024; // bytes
// bytes that a target leaves in the cache at most before it has the system write them to the disk
constexpr qint64 writebackStep = 8 * 1024 * 1024;
// A device makes durable together what several threads wait for at the same time.
constexpr int diskThreadCount = 8;

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

} // namespace

struct FileStorePrivate
{
    explicit FileStorePrivate(FileStore *store)
        : q(store)
        , root(Locations::dataLocation().absoluteFilePath(QStringLiteral("packages")))
        , files(root.absoluteFilePath(QStringLiteral("files")))
    {
        diskThreads.setMaxThreadCount(diskThreadCount);
    }

    FileStore *q;
    const QDir root;
    const QDir files;
    QThreadPool diskThreads;
};

QSharedPointer<FileStore> FileStore::instance()
{
    static QWeakPointer<FileStore> current;
    QSharedPointer<FileStore> store = current.toStrongRef();
    if (!store) {
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

QThreadPool *FileStore::diskThreads() const
{
    return &d->diskThreads;
}

FileStoreTarget *FileStore::createTarget(
    const QString &digest, QCryptographicHash::Algorithm algorithm)
{
    if (!isValidDigest(digest))
        return nullptr;
    auto *target = new FileStoreTarget(digest, algorithm, filePath(digest), this);
    if (!target->open(QIODevice::WriteOnly)) {
        target->deleteLater();
        return nullptr;
    }
    if (!leavesRoomForOthers(target->m_saveFile)) {
        qCCritical(lcFileStore) << "Too many open files for package storage file"
                                << target->m_saveFile.fileName();
        delete target;
        return nullptr;
    }
    return target;
}

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

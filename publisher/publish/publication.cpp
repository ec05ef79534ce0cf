// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "publish/publication.h"

#include "catalogue/parallel.h"
#include "disk/listing.h"
#include "disk/synchronise.h"
#include "publish/filehasher.h"

#include <norvakutil/fileutils.h>

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>

#include <atomic>
#include <filesystem>

namespace nk::pm::publisher {

namespace {

constexpr QFile::Permissions forEverybody =
    QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther;
constexpr QFile::Permissions forOwner = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;

QString cannot(const char *what, const QString &path, const QString &why)
{
    return QStringLiteral("can't %1 \"%2\": %3").arg(QLatin1String(what), path, why);
}

/// Writes \a source, whose digest must be \a digest, to a new file at \a path that everybody may
/// read and that has the time of its content.
QString stage(const QString &path, const QByteArray &digest, QIODevice &source)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return cannot("write", path, file.errorString());
    const QByteArray found = digestOf(source, &file);
    if (file.error() != QFile::NoError)
        return cannot("write", path, file.errorString());
    if (found.isEmpty())
        return QStringLiteral("can't be read: ") + source.errorString();
    if (found != digest)
        return QStringLiteral("changed while it was being published");
    const auto time = QDateTime::fromSecsSinceEpoch(modificationTime(digest), Qt::UTC);
    if (!file.setPermissions(forEverybody)
        || !file.setFileTime(time, QFileDevice::FileModificationTime))
        return cannot("write", path, file.errorString());
    return {};
}

/// QFile's rename doesn't replace.
QString replace(const QString &target, const QString &source)
{
    std::error_code error;
    std::filesystem::rename(
        std::filesystem::u8path(source.toStdString()),
        std::filesystem::u8path(target.toStdString()), error);
    return error ? cannot("replace", target, QString::fromStdString(error.message())) : QString();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool hasContentTime(const QFileInfo &info, const QByteArray &digest)
{
    return info.lastModified().toSecsSinceEpoch() == modificationTime(digest);
}

} // namespace

Publication::Publication(const QString &root)
    : m_layout(QDir::cleanPath(QFileInfo(root).absoluteFilePath()))
    , m_lock(m_layout.lockFile())
{}

Publication::~Publication()
{
    if (m_lock.isHeld()) {
        QDir(m_layout.stagingDirectory()).removeRecursively();
        m_lock.letGo();
    }
    if (QFileInfo::exists(m_layout.ledgerFile()))
        return;
    while (!m_made.isEmpty()) {
        const QString path = m_made.takeLast();
        if (QFileInfo::exists(path) && !QDir().rmdir(path))
            break;
    }
}

bool Publication::isNew() const
{
    return !QFileInfo(m_layout.stateDirectory()).isDir();
}

QString Publication::objection() const
{
    const QString root = m_layout.root();
    if (QFileInfo::exists(root) && !QFileInfo(root).isDir())
        return QStringLiteral("\"%1\" is not a directory").arg(root);
    const disk::Listing held = disk::listing(root);
    if (!held.fault.isEmpty() || (held.files.isEmpty() && held.directories.isEmpty()))
        return held.fault;
    return QStringLiteral("\"%1\" holds other things than a publication; --force publishes there "
                          "all the same")
        .arg(root);
}

bool Publication::makeDirectory(const QString &path)
{
    QStringList missing;
    for (QString each = path; !QFileInfo::exists(each); each = QFileInfo(each).path())
        missing.prepend(each);
    m_made += missing;
    return QDir().mkpath(path);
}

QString Publication::open()
{
    if (QFileInfo::exists(m_layout.root()) && !QFileInfo(m_layout.root()).isDir())
        return QStringLiteral("\"%1\" is not a directory").arg(m_layout.root());
    const QString failed =
        QStringLiteral("can't make the directory \"%1\": it must be yours to write");
    if (!makeDirectory(m_layout.stateDirectory()))
        return failed.arg(m_layout.stateDirectory());
    QFile::setPermissions(m_layout.stateDirectory(), forOwner);
    if (!m_lock.take())
        return m_lock.isElsewhere()
                   ? QStringLiteral("another publisher is at work on \"%1\" (it has \"%2\")")
                         .arg(m_layout.root(), m_lock.path())
                   : QStringLiteral("can't lock \"%1\"").arg(m_lock.path());
    QDir(m_layout.stagingDirectory()).removeRecursively();
    for (const QString &path : {m_layout.stagingDirectory(), m_layout.filesDirectory()}) {
        if (!makeDirectory(path))
            return failed.arg(path);
    }
    return {};
}

QByteArray Publication::ledger() const
{
    return contentOf(m_layout.ledgerFile());
}

bool Publication::ledgerIsOwn() const
{
    const QByteArray mark = contentOf(m_layout.ledgerMark());
    return !mark.isEmpty() && mark == digestOf(ledger()).toHex();
}

bool Publication::hasLedger(const QByteArray &bytes) const
{
    const QFileInfo info(m_layout.ledgerFile());
    return info.size() == bytes.size() && hasContentTime(info, digestOf(bytes))
           && ledger() == bytes;
}

bool Publication::has(const QByteArray &digest, qint64 size) const
{
    const QFileInfo info(m_layout.contentFile(digest));
    return info.isFile() && info.size() == size && hasContentTime(info, digest);
}

QString Publication::stageFile(const QByteArray &digest, QIODevice &source) const
{
    return stage(m_layout.stagedFile(digest), digest, source);
}

QString Publication::syncStaged(const QVector<QByteArray> &digests) const
{
    std::atomic_bool synced{true};
    if (digests.size() <= disk::fewFiles || !disk::synchroniseAll(m_layout.stagingDirectory())) {
        QVector<QByteArray> jobs = digests;
        forEachOnAllCores(jobs, [&](const QByteArray &digest) {
            if (!util::FileUtils::syncFile(m_layout.stagedFile(digest)))
                synced = false;
        });
    }
    return synced ? QString()
                  : QStringLiteral("can't force the files in \"%1\" to the disk")
                        .arg(m_layout.stagingDirectory());
}

QString Publication::placeFile(const QByteArray &digest) const
{
    return replace(m_layout.contentFile(digest), m_layout.stagedFile(digest));
}

QString Publication::publishLedger(const QByteArray &ledger) const
{
    const QByteArray digest = digestOf(ledger);
    const QString staged = m_layout.stagedFile(digest);
    QBuffer source;
    source.setData(ledger);
    source.open(QIODevice::ReadOnly);
    QString fault = stage(staged, digest, source);
    if (fault.isEmpty() && !util::FileUtils::syncFile(staged))
        fault = QStringLiteral("can't force \"%1\" to the disk").arg(staged);
    if (fault.isEmpty())
        fault = replace(m_layout.ledgerFile(), staged);
    if (!fault.isEmpty())
        return fault;
    util::FileUtils::syncFile(m_layout.ledgerFile());
    // Without the mark the next publication signs all packages anew, nothing worse.
    QFile mark(m_layout.ledgerMark());
    if (mark.open(QIODevice::WriteOnly))
        mark.write(digest.toHex());
    return {};
}

} // namespace nk::pm::publisher

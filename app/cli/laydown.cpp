// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "laydown.h"

#include "filecopy.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

namespace nk::pm::cli {
namespace {

constexpr auto files = QDir::Files | QDir::Hidden | QDir::System;
constexpr auto directories = QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot;
const QLatin1String ownPrefix(".nkpm");

QString systemError()
{
    return QString::fromLocal8Bit(strerror(errno));
}

bool rename(const QString &from, const QString &to)
{
    return ::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0;
}

/// Puts each in the other's place, so that there is no moment without either.
bool exchange(const QString &a, const QString &b)
{
    return renameat2(
               AT_FDCWD, QFile::encodeName(a).constData(), AT_FDCWD,
               QFile::encodeName(b).constData(), RENAME_EXCHANGE)
           == 0;
}

bool sameFiles(const QDir &a, const QDir &b, const std::atomic<bool> &cancelled)
{
    const QStringList names = a.entryList(files, QDir::Name);
    if (names != b.entryList(files, QDir::Name))
        return false;
    for (const auto &name : names) {
        if (!haveSameContent(a.filePath(name), b.filePath(name), cancelled))
            return false;
    }
    return true;
}

bool isOwnName(const QString &part)
{
    return !part.isEmpty() && part != QLatin1String(".") && part != QLatin1String("..")
           && !part.contains(QLatin1Char('/')) && !part.contains(QChar::Null)
           && !part.startsWith(ownPrefix);
}

} // namespace

QString relativePackagePath(const QString &type, const QString &id)
{
    QStringList parts = type.isEmpty() ? QStringList() : type.split(QLatin1Char(':'));
    parts.append(id);
    for (const auto &part : qAsConst(parts)) {
        if (!isOwnName(part))
            return {};
    }
    return parts.join(QLatin1Char('/'));
}

LayDown::LayDown(const QString &directory)
    : m_directory(QDir(directory).absolutePath())
    , m_staging(m_directory.filePath(ownPrefix + QLatin1String("-staging")))
    , m_lock(m_directory.filePath(ownPrefix + QLatin1String(".lock")))
{
    m_lock.setStaleLockTime(0); // a lock is stale when its process is gone, however old it is
}

LayDown::~LayDown()
{
    if (m_lock.isLocked()) {
        m_staging.removeRecursively();
        m_lock.unlock();
    }
    if (m_committed)
        return;
    for (const auto &path : qAsConst(m_made)) {
        if (!QDir().rmdir(path))
            break;
    }
}

QString LayDown::open()
{
    QString fault = makeDirectory();
    if (!fault.isEmpty())
        return fault;
    if (!m_lock.tryLock(0)) {
        if (m_lock.error() == QLockFile::LockFailedError) {
            return QStringLiteral("another nkpm is installing into %1").arg(m_directory.path());
        }
        return QStringLiteral("can't write to %1").arg(m_directory.path());
    }
    m_staging.removeRecursively();
    if (!m_staging.mkpath(QStringLiteral(".")))
        return QStringLiteral("can't write to %1: %2").arg(m_directory.path(), systemError());
    return {};
}

QString LayDown::makeDirectory()
{
    QString path = m_directory.path();
    while (!QFileInfo::exists(path) && path != QFileInfo(path).path()) {
        m_made.append(path);
        path = QFileInfo(path).path();
    }
    if (!QFileInfo(path).isDir())
        return QStringLiteral("%1 is not a directory").arg(path);
    if (!m_made.isEmpty() && !m_directory.mkpath(QStringLiteral(".")))
        return QStringLiteral("can't make %1: %2").arg(m_directory.path(), systemError());
    return {};
}

QString LayDown::stage(
    LaidPackage &package, Mode mode, bool replace, const std::atomic<bool> &cancelled)
{
    package.files = package.source.entryList(files, QDir::Name);
    package.bytes = 0;
    for (const auto &name : qAsConst(package.files))
        package.bytes += QFileInfo(package.source.filePath(name)).size();
    QString fault = judgeTarget(package, replace, cancelled);
    if (!fault.isEmpty() || package.state == LaidPackage::Present)
        return fault;
    package.staged = m_staging.filePath(QString::number(m_stagedCount++));
    if (!QDir().mkdir(package.staged))
        return QStringLiteral("can't make %1: %2").arg(package.staged, systemError());
    const auto place = mode == Link ? linkOrCopy : copyFile;
    for (const auto &name : qAsConst(package.files)) {
        fault =
            place(package.source.filePath(name), QDir(package.staged).filePath(name), cancelled);
        if (!fault.isEmpty())
            break;
    }
    return fault;
}

QString LayDown::judgeTarget(
    LaidPackage &package, bool replace, const std::atomic<bool> &cancelled) const
{
    const QDir target(m_directory.filePath(package.path));
    package.state = LaidPackage::New;
    if (target.entryList(files).isEmpty())
        return {};
    if (sameFiles(package.source, target, cancelled)) {
        package.state = LaidPackage::Present;
        return {};
    }
    if (!replace)
        return QStringLiteral("%1 holds other files (--replace replaces them)").arg(target.path());
    if (!target.entryList(directories).isEmpty())
        return QStringLiteral("%1 holds directories and can't be replaced").arg(target.path());
    package.state = LaidPackage::Replaced;
    return {};
}

QString LayDown::commit(const QVector<LaidPackage> &packages)
{
    for (int i = 0; i < packages.size(); ++i) {
        QString fault = moveIn(packages.at(i));
        if (fault.isEmpty())
            continue;
        while (i-- > 0)
            takeBack(packages.at(i));
        return fault;
    }
    m_committed = true;
    return {};
}

QString LayDown::moveIn(const LaidPackage &package) const
{
    if (package.state == LaidPackage::Present)
        return {};
    const QString target = m_directory.filePath(package.path);
    QString fault = QStringLiteral("can't put %1 in its place: ").arg(target);
    errno = 0;
    if (!QDir().mkpath(QFileInfo(target).path()))
        return fault + systemError();
    if (package.state == LaidPackage::Replaced)
        return exchange(package.staged, target) ? QString() : fault + systemError();
    if (rename(package.staged, target))
        return {};
    if (errno != EEXIST && errno != ENOTEMPTY)
        return fault + systemError();
    // The directory is one of a type too, with packages below it: the files go there one by one.
    for (const auto &name : package.files) {
        if (!rename(package.staged + QLatin1Char('/') + name, target + QLatin1Char('/') + name)) {
            const QString reason = systemError();
            takeBack(package);
            return fault + reason;
        }
    }
    return {};
}

void LayDown::takeBack(const LaidPackage &package) const
{
    const QString target = m_directory.filePath(package.path);
    if (package.state == LaidPackage::Replaced)
        exchange(package.staged, target);
    if (package.state != LaidPackage::New)
        return;
    for (const auto &name : package.files)
        QFile::remove(target + QLatin1Char('/') + name);
    QString path = target;
    while (path != m_directory.path() && QDir().rmdir(path))
        path = QFileInfo(path).path();
}

} // namespace nk::pm::cli

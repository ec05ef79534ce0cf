// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "laydown.h"

#include "disk/listing.h"
#include "disk/synchronise.h"
#include "filecopy.h"

#include "install/packagepath.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

namespace nk::pm::cli {
namespace {

const QLatin1String ownPrefix(".nkpm");

QString systemError()
{
    return QString::fromLocal8Bit(strerror(errno));
}

/// renameat2() of two paths.
bool rename(const QString &from, const QString &to, unsigned int flags)
{
    const QByteArray source = QFile::encodeName(from), target = QFile::encodeName(to);
    return renameat2(AT_FDCWD, source.constData(), AT_FDCWD, target.constData(), flags) == 0;
}

/// Puts each in the other's place, so that there is no moment without either.
bool exchange(const QString &a, const QString &b)
{
    return rename(a, b, RENAME_EXCHANGE);
}

/// A file of somebody else's that came meanwhile stays.
bool moveFile(const QString &from, const QString &to)
{
    return rename(from, to, RENAME_NOREPLACE);
}

bool holdsSameFiles(
    const LaidPackage &package, const QDir &target, const std::atomic<bool> &cancelled)
{
    const auto isSame = [&](const QString &name) {
        return haveSameContent(package.source.filePath(name), target.filePath(name), cancelled);
    };
    return std::all_of(package.files.begin(), package.files.end(), isSame);
}

QString damage(const LaidPackage &package, const QString &name)
{
    return QStringLiteral(
               "the file \"%1\" of %2 isn't what the catalogue says: it is damaged in the store "
               "(nkpm store repair fetches it again)")
        .arg(name, package.path);
}

} // namespace

QString relativePackagePath(const QString &type, const QString &id)
{
    const QString path = packagePath(type, id);
    return path.startsWith(ownPrefix) ? QString() : path;
}

LayDown::LayDown(const QString &directory)
    : m_directory(QDir(directory).absolutePath())
    , m_staging(m_directory.filePath(ownPrefix + QLatin1String("-staging")))
    , m_lock(m_directory.filePath(ownPrefix + QLatin1String(".lock")))
{}

LayDown::~LayDown()
{
    if (m_lock.isHeld()) {
        m_staging.removeRecursively();
        m_lock.letGo();
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
    if (!m_lock.take()) {
        const QString reason =
            m_lock.isElsewhere() ? QStringLiteral("another nkpm is installing into %1 (it has %2)")
                                 : QStringLiteral("can't write to %1 (can't make %2)");
        return reason.arg(m_directory.path(), m_lock.path());
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
    package.bytes = 0;
    for (const auto &name : qAsConst(package.files)) {
        const QFileInfo file(package.source.filePath(name));
        if (!isPathComponent(name))
            return QStringLiteral(
                       "the file \"%1\" of %2 can't be laid down: its name leads elsewhere")
                .arg(name, package.path);
        if (!file.isFile())
            return QStringLiteral("can't read %1").arg(file.filePath());
        package.bytes += file.size();
    }
    QString fault = judgeTarget(package, replace, cancelled);
    if (!fault.isEmpty() || package.state == LaidPackage::Present)
        return fault;
    package.staged = m_staging.filePath(QString::number(m_stagedCount++));
    if (!QDir().mkdir(package.staged))
        return QStringLiteral("can't make %1: %2").arg(package.staged, systemError());
    return placeFiles(package, mode, cancelled);
}

QString LayDown::placeFiles(
    LaidPackage &package, Mode mode, const std::atomic<bool> &cancelled) const
{
    const auto place = mode == Link ? linkOrCopy : copyFile;
    for (const auto &name : qAsConst(package.files)) {
        ContentCheck check(package.digests.value(name));
        const QString target = QDir(package.staged).filePath(name);
        QString fault = place(package.source.filePath(name), target, check, cancelled);
        if (fault.isEmpty() && !check.holds())
            fault = damage(package, name);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString LayDown::checkFiles(const LaidPackage &package, const std::atomic<bool> &cancelled) const
{
    for (const auto &name : package.files) {
        ContentCheck check(package.digests.value(name));
        QString fault = readFile(package.source.filePath(name), check, cancelled);
        if (fault.isEmpty() && !check.holds())
            fault = damage(package, name);
        if (!fault.isEmpty())
            return fault;
    }
    return {};
}

QString LayDown::judgeTarget(
    LaidPackage &package, bool replace, const std::atomic<bool> &cancelled) const
{
    const QDir target(m_directory.filePath(package.path));
    const disk::Listing held = disk::listing(target.path());
    package.state = LaidPackage::New;
    if (held.files.isEmpty() || !held.fault.isEmpty())
        return held.fault;
    const QString fault = checkFiles(package, cancelled);
    if (!fault.isEmpty())
        return fault;
    package.files.sort();
    if (held.files == package.files && holdsSameFiles(package, target, cancelled)) {
        package.state = LaidPackage::Present;
        return {};
    }
    if (!replace)
        return QStringLiteral("%1 holds other files (--replace replaces them)").arg(target.path());
    if (!held.directories.isEmpty())
        return QStringLiteral("%1 holds directories and can't be replaced").arg(target.path());
    package.state = LaidPackage::Replaced;
    return {};
}

QString LayDown::commit(const QVector<LaidPackage> &packages)
{
    QString fault = synchroniseStaged(packages);
    if (fault.isEmpty())
        fault = moveAllIn(packages);
    if (!fault.isEmpty())
        return fault;
    fault = synchronisePlaces(packages);
    if (!fault.isEmpty())
        std::for_each(packages.rbegin(), packages.rend(), [this](const LaidPackage &package) {
            takeBack(package);
        });
    m_committed = fault.isEmpty();
    return fault;
}

/// Without this a file may be empty after a loss of power, though its name is there.
QString LayDown::synchroniseStaged(const QVector<LaidPackage> &packages) const
{
    QStringList paths;
    for (const auto &package : packages) {
        for (const auto &name : package.files) {
            if (package.state != LaidPackage::Present)
                paths.append(package.staged + QLatin1Char('/') + name);
        }
    }
    return disk::synchronise(paths, m_staging.path())
               ? QString()
               : QStringLiteral("can't force the files to the disk: %1").arg(systemError());
}

/// The directories in which entries were made or replaced.
QString LayDown::synchronisePlaces(const QVector<LaidPackage> &packages) const
{
    QSet<QString> paths{m_directory.path()};
    for (const auto &package : packages) {
        QString path = m_directory.filePath(package.path);
        for (; package.state != LaidPackage::Present && !paths.contains(path);
             path = QFileInfo(path).path())
            paths.insert(path);
    }
    for (const auto &path : m_made)
        paths.insert(path);
    return disk::synchronise(paths.values(), m_directory.path())
               ? QString()
               : QStringLiteral("can't force %1 to the disk: %2")
                     .arg(m_directory.path(), systemError());
}

/// All or none.
QString LayDown::moveAllIn(const QVector<LaidPackage> &packages) const
{
    for (int i = 0; i < packages.size(); ++i) {
        QString fault = moveIn(packages.at(i));
        if (fault.isEmpty())
            continue;
        while (i-- > 0)
            takeBack(packages.at(i));
        return fault;
    }
    return {};
}

QString LayDown::moveIn(const LaidPackage &package) const
{
    if (package.state == LaidPackage::Present)
        return {};
    const QString target = m_directory.filePath(package.path);
    const QString fault = QStringLiteral("can't put %1 in its place: ").arg(target);
    errno = 0;
    if (!QDir().mkpath(QFileInfo(target).path()))
        return fault + systemError();
    if (package.state == LaidPackage::Replaced)
        return exchange(package.staged, target) ? QString() : fault + systemError();
    if (rename(package.staged, target, 0))
        return {};
    if (errno != EEXIST && errno != ENOTEMPTY)
        return fault + systemError();
    const QString reason = moveFilesIn(package);
    return reason.isEmpty() ? reason : fault + reason;
}

/// Into a directory that is one of a type too, with packages below it: one by one.
QString LayDown::moveFilesIn(const LaidPackage &package) const
{
    const QString target = m_directory.filePath(package.path);
    const auto path = [](const QString &directory, const QString &name) {
        return directory + QLatin1Char('/') + name;
    };
    for (int i = 0; i < package.files.size(); ++i) {
        const QString &name = package.files.at(i);
        if (moveFile(path(package.staged, name), path(target, name)))
            continue;
        QString reason = systemError();
        while (i-- > 0)
            QFile::remove(path(target, package.files.at(i)));
        return reason;
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

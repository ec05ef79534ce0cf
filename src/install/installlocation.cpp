// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installlocation.h"

#include "install/filecopy.h"
#include "install/installlocationroot.h"
#include "install/installpath.h"
#include "install/logging.h"

#include <QFileInfo>

namespace nk::pm {

namespace {

QString cleanedLocation(const QString &path)
{
    return pathInside(QStringLiteral("."), path);
}

/// Absolute path of \a path, which was cleaned, below \a root; empty if \a path was refused or
/// passes through a symbolic link that leads outside.
QString reachablePath(const InstallLocationRoot &root, const QString &path)
{
    if (path.isEmpty() || !linksStayInside(root.directory, path))
        return QString();
    return QDir::cleanPath(root.directory + QLatin1Char('/') + path);
}

} // namespace

InstallLocation::InstallLocation() = default;
InstallLocation::InstallLocation(const InstallLocation &) = default;
InstallLocation::InstallLocation(InstallLocation &&) noexcept = default;
InstallLocation &InstallLocation::operator=(const InstallLocation &) = default;
InstallLocation &InstallLocation::operator=(InstallLocation &&) noexcept = default;
InstallLocation::~InstallLocation() = default;

InstallLocation::InstallLocation(
    const QSharedPointer<InstallLocationRoot> &root, const QString &path)
    : m_root(root)
    , m_path(path)
{}

InstallLocation InstallLocation::createRoot()
{
    return InstallLocationRoot::createLocation();
}

bool InstallLocation::isValid() const
{
    return !m_root.isNull();
}

InstallLocation InstallLocation::subLocation(const QString &name) const
{
    if (!isValid())
        return InstallLocation();
    const QString path = QStringLiteral("%1/%2").arg(m_path, name);
    if (pathInside(cleanedLocation(m_path), path).isEmpty())
        return InstallLocation();
    return InstallLocation(m_root, path);
}

QDir InstallLocation::directory(bool create) const
{
    if (!isValid())
        return QDir(QString());
    const QString path = reachablePath(*m_root, cleanedLocation(m_path));
    if (path.isEmpty())
        return QDir(QString());
    const QDir directory(path);
    if (create && !directory.exists() && !directory.mkpath(QStringLiteral(".")))
        qCCritical(lcInstall) << "Failed to create package install location" << path;
    return directory;
}

bool InstallLocation::contains(const QString &fileName) const
{
    return !pathToFile(fileName).isEmpty();
}

QString InstallLocation::pathToFile(const QString &fileName) const
{
    const QString path = targetPath(fileName);
    return !path.isEmpty() && QFileInfo::exists(path) ? path : QString();
}

bool InstallLocation::installFile(const QString &source, const QString &fileName) const
{
    const QString target = targetPath(fileName);
    if (target.isEmpty())
        return false;
    if (QFileInfo(target).isFile())
        return true;
    // Opening a pipe would block the thread for good, and links to links lead astray.
    if (!QFileInfo(source).isFile())
        return false;
    directory(true);
    return hardLink(source, target) || copyFile(source, target) || QFileInfo(target).isFile();
}

QString InstallLocation::targetPath(const QString &fileName) const
{
    if (!isValid())
        return QString();
    return reachablePath(*m_root, filePathInside(cleanedLocation(m_path), fileName));
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installdirectory.h"

#include "install/filecopy.h"
#include "install/packagepath.h"

#include <QFileInfo>

namespace nk::pm {

static QString absolutePath(const QDir &directory)
{
    return directory.isAbsolute() ? directory.path() : QString();
}

InstallDirectory::InstallDirectory(const InstallLocation &location)
    : m_location(location)
    , m_path(absolutePath(location.directory(false)))
{}

// A link neither replaces nor follows what stands at the target, so that there is no look at it
// first. Whatever keeps the link from being made is left to the long way.
bool InstallDirectory::installFile(const QString &source, const QString &fileName) const
{
    if (!isPathComponent(fileName))
        return false;
    const bool linked = !m_path.isEmpty() && QFileInfo(source).isFile()
                        && hardLink(source, m_path + QLatin1Char('/') + fileName);
    return linked || m_location.installFile(source, fileName);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/directoryfault.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace nk::pm::app {
namespace {

struct DirectoryFault
{
    Q_DECLARE_TR_FUNCTIONS(DirectoryFault)
};

} // namespace

QString directoryFault(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return DirectoryFault::tr("%1: no such directory").arg(path);
    if (!info.isDir())
        return DirectoryFault::tr("%1 is not a directory").arg(path);
    if (!info.isReadable() || !info.isExecutable())
        return DirectoryFault::tr("%1 can't be read: permission denied").arg(path);
    const QDir directory(path);
    for (const char *part : {"packages", "dictionary", "links"}) {
        if (directory.exists(QLatin1String(part)))
            return {};
    }
    return DirectoryFault::tr("%1 is no catalogue: it holds neither \"packages\" nor "
                              "\"dictionary\" nor \"links\"")
        .arg(path);
}

QString dataDirectoryFault(const QString &path)
{
    const QString own = path + QLatin1String("/packages");
    if (QDir().mkpath(own) && QFileInfo(own).isWritable())
        return {};
    return DirectoryFault::tr("%1 can't hold the program's own files: make it writable, or name "
                              "another directory with --data")
        .arg(path);
}

} // namespace nk::pm::app

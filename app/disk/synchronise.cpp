// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "disk/synchronise.h"

#include <norvakutil/fileutils.h>

#include <QFile>

#include <algorithm>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace nk::pm::disk {

#ifdef Q_OS_LINUX

bool synchroniseAll(const QString &directory)
{
    const int descriptor =
        ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::syncfs(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

#else

bool synchroniseAll(const QString &)
{
    return false;
}

#endif

bool synchronise(const QStringList &paths, const QString &directory)
{
    if (paths.size() > fewFiles && synchroniseAll(directory))
        return true;
    return std::all_of(paths.begin(), paths.end(), [](const QString &path) {
        return util::FileUtils::syncFile(path);
    });
}

} // namespace nk::pm::disk

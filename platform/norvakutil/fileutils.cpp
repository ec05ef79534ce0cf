// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakutil/fileutils.h"

#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace nk::util {

#ifdef Q_OS_WIN

bool FileUtils::syncFile(const QString &path)
{
    // FlushFileBuffers needs a handle that may write.
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        return false;
    return FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()))) != 0;
}

#else

static bool syncPath(const QString &path, int flags)
{
    const int fd = ::open(QFile::encodeName(path).constData(), flags | O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool synced = ::fsync(fd) == 0;
    ::close(fd);
    return synced;
}

bool FileUtils::syncFile(const QString &path)
{
    return syncPath(path, 0) && syncPath(QFileInfo(path).absolutePath(), O_DIRECTORY);
}

#endif

} // namespace nk::util

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>
#include <QFile>

namespace nk::pm::test {

/// The most memory that this process ever had, in bytes; 0 where the system doesn't tell.
inline qint64 peakMemory()
{
    QFile file("/proc/self/status");
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray status = file.readAll();
    const int start = status.indexOf("VmHWM:") + 6;
    return status.mid(start, status.indexOf("kB", start) - start).trimmed().toLongLong() * 1024;
}

/// How many file descriptors this process has open; 0 where the system doesn't tell.
inline int openDescriptors()
{
    return int(QDir("/proc/self/fd").count());
}

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storelock.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QThread>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace nk::pm {

StoreLock::StoreLock(int descriptor)
    : m_descriptor(descriptor)
{}

#ifdef Q_OS_UNIX

std::unique_ptr<StoreLock> StoreLock::take(
    const QString &path, Kind kind, std::chrono::milliseconds patience)
{
    // Programs that the process starts must not go on holding it.
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (descriptor < 0)
        return nullptr;
    const QDeadlineTimer deadline(patience);
    while (::flock(descriptor, (kind == Shared ? LOCK_SH : LOCK_EX) | LOCK_NB) != 0) {
        if (deadline.hasExpired()) {
            ::close(descriptor);
            return nullptr;
        }
        QThread::usleep(500);
    }
    return std::unique_ptr<StoreLock>(new StoreLock(descriptor));
}

StoreLock::~StoreLock()
{
    ::close(m_descriptor);
}

#else

std::unique_ptr<StoreLock> StoreLock::take(const QString &, Kind, std::chrono::milliseconds)
{
    return nullptr;
}

StoreLock::~StoreLock() = default;

#endif

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/openfilelimit.h"

#include <QFileDevice>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

namespace nk::pm {

#ifdef Q_OS_UNIX

bool leavesRoomForOthers(const QFileDevice &file)
{
    // The system gives out the lowest free number, so that a number tells how many are in use.
    const rlim_t used = rlim_t(qMax(file.handle(), 0));
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || used < limit.rlim_cur / 2)
        return true;
    const rlimit raised{qMin(limit.rlim_max, limit.rlim_cur * 2), limit.rlim_max};
    if (raised.rlim_cur > limit.rlim_cur && ::setrlimit(RLIMIT_NOFILE, &raised) == 0)
        return true;
    return used < limit.rlim_cur - limit.rlim_cur / 4;
}

#else

bool leavesRoomForOthers(const QFileDevice &)
{
    return true;
}

#endif

} // namespace nk::pm

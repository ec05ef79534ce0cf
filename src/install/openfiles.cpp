// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/openfiles.h"

#include <QFileDevice>

#include <algorithm>
#include <limits>

#ifdef Q_OS_UNIX
#include <sys/resource.h>
#endif

namespace nk::pm {

#ifdef Q_OS_UNIX

namespace {

/// The soft limit of this moment.
rlim_t openFileLimit()
{
    rlimit limit{};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
}

} // namespace

int openTargetLimit()
{
    constexpr rlim_t most = 16384;
    return int(std::clamp<rlim_t>(openFileLimit() / 4, 1, most));
}

bool leavesRoomForOthers(const QFileDevice &file)
{
    // The system gives out the lowest free number, so that a number tells how many are in use.
    const rlim_t limit = openFileLimit();
    return rlim_t(qMax(file.handle(), 0)) < limit - limit / 4;
}

#else

int openTargetLimit()
{
    return std::numeric_limits<int>::max();
}

bool leavesRoomForOthers(const QFileDevice &)
{
    return true;
}

#endif

} // namespace nk::pm

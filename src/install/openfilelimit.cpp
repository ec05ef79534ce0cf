// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/openfilelimit.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <algorithm>
#include <sys/resource.h>
#endif

namespace nk::pm {

bool raiseOpenFileLimit()
{
#ifdef Q_OS_UNIX
    constexpr rlim_t most = 65536;
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return false;
    const rlim_t wanted = std::min(limit.rlim_max, most);
    if (limit.rlim_cur >= wanted)
        return true;
    limit.rlim_cur = wanted;
    return ::setrlimit(RLIMIT_NOFILE, &limit) == 0;
#else
    return true;
#endif
}

} // namespace nk::pm

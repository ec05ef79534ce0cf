// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <chrono>
#include <limits>

namespace nk::pm {

/// How long to wait before the next attempt after \a failures attempts have failed before the last
/// one: 30 s, twice as long each time, up to the longest time that a timer takes (24.8 days).
constexpr std::chrono::milliseconds retryDelay(int failures)
{
    constexpr std::chrono::milliseconds first = std::chrono::seconds(30);
    constexpr std::chrono::milliseconds longest(std::numeric_limits<int>::max());
    std::chrono::milliseconds delay = first;
    for (int i = 0; i < failures && delay < longest; ++i)
        delay *= 2;
    return delay < longest ? delay : longest;
}

} // namespace nk::pm

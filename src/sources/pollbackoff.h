// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <algorithm>
#include <chrono>

namespace nk::pm {

/// When the next poll is due: a fixed time after a success, ever longer after failures in a row.
class PollBackoff
{
public:
    static constexpr std::chrono::seconds pollInterval{120};
    static constexpr std::chrono::seconds firstRetry{5};
    static constexpr int maximumDoublings = 6;

    /// The delay after a poll that got an answer.
    std::chrono::seconds afterSuccess()
    {
        m_failures = 0;
        return pollInterval;
    }

    /// The delay after one that didn't: 5, 10, 20, 40, 80, 160 and from then on 320 seconds.
    std::chrono::seconds afterFailure()
    {
        const std::chrono::seconds delay = firstRetry * (1 << m_failures);
        m_failures = std::min(m_failures + 1, maximumDoublings);
        return delay;
    }

private:
    int m_failures = 0; // in a row, counted up to where they no longer matter
};

} // namespace nk::pm

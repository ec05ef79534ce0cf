// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "closing/closingdown.h"

#include <atomic>

namespace nk::pm {

/// What the thread that works on a task of StoreCare shares with the one that shows it.
struct CareTask
{
    std::atomic_bool isCancelled{false};
    std::atomic_int files{0};
    std::atomic_int totalFiles{0};
    std::atomic<qint64> bytes{0};
    std::atomic<qint64> totalBytes{0};

    /// Asked between two files and two blocks.
    bool goesOn() const { return !isCancelled && !isClosingDown(); }
};

} // namespace nk::pm

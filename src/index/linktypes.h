// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QString>

namespace nk::pm {

/// What a link says about its two ends. The numbers are part of every source's data.
enum LinkType : int {
    IsA = 0,
    Contains = 1,
    RelatesTo = 2,
    IsNotA = 3,
    Is = 4,
    Uses = 5,
    Requires = 6,
};

/// The LinkType that \a name ("is_a", "contains", ...) stands for, compared exactly; -1 if it is
/// none. Safe on any thread.
NK_PM_EXPORT int linkTypeFromString(const QString &name);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QString>

namespace nk::pm {

/// What a link says about its two ends: which keywords hold for a package at its start, which it
/// passes on, and what is installed. The numbers are part of every source's data.
enum LinkType : int {
    IsA = 0,       ///< the keyword holds, and all that its own links lead to
    Contains = 1,  ///< the keyword holds, and what it contains and relates to
    RelatesTo = 2, ///< the keyword holds, and what it relates to
    IsNotA = 3,    ///< the keyword doesn't hold, whatever else leads to it
    Is = 4,        ///< the keyword holds, and what it relates to; in the order of packages a trait
    Uses = 5,      ///< the keyword alone holds
    Requires = 6,  ///< the package at the other end is installed too
};

/// The LinkType that \a name ("is_a", "contains", ...) stands for, compared exactly; -1 if it is
/// none. Safe on any thread.
NK_PM_EXPORT int linkTypeFromString(const QString &name);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/norvak_export.h>

#include <QDir>

namespace nk {

/// Where the application keeps its data. All functions are safe on any thread.
class NORVAK_EXPORT Locations
{
public:
    /// The writable data directory, which need not exist yet: what setDataLocation() was given,
    /// else QStandardPaths::AppDataLocation.
    static QDir dataLocation();

    /// Sets the data directory for this process; an empty \a path goes back to the default. For the
    /// application's main(), before anything of the library is made, and for tests.
    static void setDataLocation(const QString &path);
};

} // namespace nk

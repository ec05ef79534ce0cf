// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakutil/norvakutil_export.h>

#include <QString>

namespace nk::util {

class NORVAK_UTIL_EXPORT FileUtils
{
public:
    /// Forces the file at \a path, and where the system has it the directory entry that names it,
    /// to stable storage. Blocks until the device has answered. False if the file can't be opened
    /// or the system reports an error; the file itself is never changed. Safe on any thread.
    static bool syncFile(const QString &path);
};

} // namespace nk::util

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

namespace nk::pm {

/// Raises this process's soft limit of open files (RLIMIT_NOFILE) to the hard one, 65536 at most.
/// False if it can't be raised; does nothing where there is no such limit. Any thread.
///
/// Optional, for the main() of an application that installs packages of many files: the library
/// never does it by itself, and then downloads so many files at a time as a quarter of the limit
/// allows. Programs that the process starts later inherit the limit, and code that calls select()
/// can't deal with descriptors from 1024 on.
NK_PM_EXPORT bool raiseOpenFileLimit();

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

namespace nk::pm::disk {

/// Up to here files are synchronised one by one: cheap, and it doesn't wait for what other programs
/// have written. Beyond, everything on the file system at once is cheaper.
constexpr int fewFiles = 100;

/// Forces all that was written to the file system of \a directory to stable storage. False if the
/// system can't or reports an error.
bool synchroniseAll(const QString &directory);

/// Forces \a paths, files and directories below \a directory, to stable storage with their names.
/// False if one of them can't be opened or the system reports an error.
bool synchronise(const QStringList &paths, const QString &directory);

} // namespace nk::pm::disk

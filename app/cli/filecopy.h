// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <atomic>

namespace nk::pm::cli {

/// Copies the file's content and permissions to \a to, which must not exist. Gives the reason of a
/// failure, which leaves a part of the file behind; an empty text if all went well. Reads the flag
/// \a cancelled once a MiB.
QString copyFile(const QString &from, const QString &to, const std::atomic<bool> &cancelled);

/// A hard link where the file system can, a copy otherwise.
QString linkOrCopy(const QString &from, const QString &to, const std::atomic<bool> &cancelled);

/// Whether both files can be read and hold the same bytes. False once \a cancelled.
bool haveSameContent(const QString &a, const QString &b, const std::atomic<bool> &cancelled);

} // namespace nk::pm::cli

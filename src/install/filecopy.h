// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm {

// How one file gets a second place on disk, or another one. hardLink() and copyFile() leave an
// existing \a target as it is and return false then; all are safe on any thread and between
// processes.

/// Makes \a target a second name of the file \a source. False where the file system can't, for
/// example across volumes.
bool hardLink(const QString &source, const QString &target);

/// Copies the content and permissions of \a source to \a target. The copy grows under a hidden
/// temporary name beside \a target, so that a full disk or a killed process leaves no half file
/// under the final name. Gives up when the application is closing down.
bool copyFile(const QString &source, const QString &target);

/// Renames \a source to \a target, in one step in place of a file that stands there.
bool moveOver(const QString &source, const QString &target);

} // namespace nk::pm

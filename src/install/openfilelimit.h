// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

class QFileDevice;

namespace nk::pm {

/// Whether \a file, just opened, leaves the process enough file descriptors for everything else.
/// Raises the process's soft limit, as far as the hard one allows, before they run short. True
/// where there is no such limit. Any thread.
///
/// All files of a package are open until the last one has arrived, and systems start a process with
/// as few as 256 or 1024 descriptors. Whoever takes the last of them leaves no socket to download
/// with.
bool leavesRoomForOthers(const QFileDevice &file);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

class QFileDevice;

namespace nk::pm {

// Systems start a process with as few as 256 or 1024 file descriptors, the files of a package are
// open until its last one has arrived, and whoever takes the last descriptor leaves no socket to
// download with. Any thread.

/// How many store targets may be open at once: a quarter of what the system allows the process now.
int openTargetLimit();

/// Whether \a file, just opened, leaves the process enough descriptors for everything else. True
/// where there is no such limit.
bool leavesRoomForOthers(const QFileDevice &file);

} // namespace nk::pm

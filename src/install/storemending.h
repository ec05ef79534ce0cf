// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/storecheck.h"

namespace nk::pm {

// The two steps of a repair that work on the disk. Each file on disk tells by its name how far its
// repair has come, so that a repair which is killed is finished by the next. For a thread that may
// wait for the disk.

/// Moves \a damaged out of the store, under removedPath(). False if it isn't there any more, or
/// another file has its name now.
bool moveOut(DamagedFile &damaged);

/// Puts \a good in the place of each installed path of \a damaged, which was moved out; then that
/// isn't kept any longer. Gives the paths that could be mended, and leaves the others in \a
/// damaged.
QStringList replaceInstalled(DamagedFile &damaged, const QString &good);

} // namespace nk::pm

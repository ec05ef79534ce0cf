// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

namespace nk::pm {

/// What the store of downloaded files takes in.
enum class StorePolicy {
    /// A file whose content isn't its digest is an error of the install that downloaded it, and
    /// stays: the next install lays it down without a word.
    Lenient,
    /// Such a file never gets its name: nothing stays of it, and the next install downloads it
    /// again. A digest that isn't as long as its algorithm's is refused before anything is sent.
    /// Files are read-only on disk, where the system has permissions, and so are the installed
    /// files, which are links to them: an editor that opens one can't change all the others.
    /// Files that the store has from before stay as they are: StoreCare finds the wrong ones.
    Strict,
};

/// For the whole process, from the next download on; to be set before the first source is made.
/// Lenient at first. Any thread.
NK_PM_EXPORT void setStorePolicy(StorePolicy policy);

/// As it was set.
NK_PM_EXPORT StorePolicy storePolicy();

} // namespace nk::pm

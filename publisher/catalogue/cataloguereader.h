// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

namespace nk::pm::publisher {

/// Reads the catalogue directory \a root, the tree that LocalPackageSource reads: "packages",
/// "dictionary" and "links". Files of packages are listed, not read.
///
/// Takes from the tree what the local source takes, so that a catalogue tried out as a directory
/// looks the same once published. What can't be read, isn't JSON or has the wrong shape is an
/// error of its file; reading goes on behind it, and what is returned then has gaps. Reads on all
/// threads of the global pool and blocks until done; not to be called from that pool.
Catalogue readCatalogue(const QString &root, Problems &problems);

} // namespace nk::pm::publisher

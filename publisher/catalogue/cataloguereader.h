// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/cataloguescan.h"
#include "catalogue/problems.h"
#include "catalogue/progress.h"

namespace nk::pm::publisher {

/// Reads the catalogue directory \a root, the tree that LocalPackageSource reads: "packages",
/// "dictionary" and "links". Files of packages are listed, not read.
///
/// Takes from the tree what the local source takes, so that a catalogue tried out as a directory
/// looks the same once published. What can't be read, isn't JSON or has the wrong shape is an
/// error of its file; reading goes on behind it, and what is returned then has gaps. Works on all
/// cores and blocks until done.
Catalogue readCatalogue(const QString &root, Links links, Problems &problems, Progress &progress);

} // namespace nk::pm::publisher

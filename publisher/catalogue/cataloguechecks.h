// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

namespace nk::pm::publisher {

/// Adds to \a problems all that keeps \a catalogue from being published as a whole, though each of
/// its files is sound: identifiers given twice, links to nothing, packages that require themselves,
/// names and lists longer than a ledger holds. Names that some readers will have trouble with give
/// warnings.
void checkCatalogue(const Catalogue &catalogue, Problems &problems);

/// Adds to \a problems what shows only once the files were hashed: two files of one package that
/// hold the same. A package server's installer knows files by content and lays down one of them.
void checkContents(const Catalogue &catalogue, Problems &problems);

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgertables.h"

namespace nk::pm {

/// The bytes that the issuer of \a package signs: the canonical JSON of an object with its type,
/// its manifest without the key "type", and its files with their hashes.
///
/// Empty if there is no such form (a lone surrogate in the manifest), or no single one: two file
/// names that are different bytes and the same text. Safe on any thread.
NK_PM_EXPORT QByteArray signedContent(const PackageEntry &package, const LedgerString &type);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "options.h"

#include <functional>

namespace nk::pm {
class PackageNode;
}

namespace nk::pm::cli {

/// Whether a package meets everything that \a options asks for; empty if they ask for nothing.
std::function<bool(PackageNode *)> matcherFor(const ListOptions &options);

/// The order that \a options ask for; empty for the index's own.
std::function<bool(PackageNode *, PackageNode *)> sorterFor(const ListOptions &options);

} // namespace nk::pm::cli

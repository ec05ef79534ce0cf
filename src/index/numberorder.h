// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>

namespace nk::pm {

class PackageNode;

/// An order of packages by a number that each of them has, the smaller one first.
///
/// A sorter like any other. PackageIndex::selectPackages() knows it, though, and asks for each
/// package's number only once instead of twice at each comparison.
struct NumberOrder
{
    /// Safe on any thread; owns copies of all it needs.
    std::function<int(const PackageNode &)> numberOf;

    bool operator()(PackageNode *a, PackageNode *b) const { return numberOf(*a) < numberOf(*b); }
};

} // namespace nk::pm

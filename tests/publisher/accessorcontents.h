// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

namespace nk::pm {
class PackageAccessor;
}

namespace nk::pm::test {

/// Loads \a accessor and tells what it holds, a line for each record, in an order that doesn't
/// depend on the source. The texts of a keyword keep theirs, which decides what is displayed.
QStringList contentsOf(PackageAccessor &accessor);

} // namespace nk::pm::test

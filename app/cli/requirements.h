// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QVector>

namespace nk::pm {
class PackageNode;
}

namespace nk::pm::cli {

/// \a packages and everything that they require, each once, requirements before what requires them
/// (within a cycle in the order in which it was entered).
QVector<const PackageNode *> withRequirements(const QVector<const PackageNode *> &packages);

/// The packages that \a package itself names as required, in the order of its links, each once.
QVector<const PackageNode *> requirementsOf(const PackageNode *package);

/// The packages that name \a package as required, each once.
QVector<const PackageNode *> dependentsOf(const PackageNode *package);

} // namespace nk::pm::cli

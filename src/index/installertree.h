// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <functional>
#include <memory>

namespace nk::pm {

class PackageInstaller;
class PackageNode;

/// Makes the installer of one package alone, never null.
using InstallerFactory = std::function<std::unique_ptr<PackageInstaller>(const PackageNode &)>;

/// Installers in a tree from which on packages that are in it already are passed over.
constexpr int maxRepeatingInstallers = 4096;

/// The installer that \a make gives for \a package, with the trees of the packages that it requires
/// below it, in the order of the links. A package that is needed in several places is there as
/// often; one that leads back to itself is passed over. GUI thread.
std::unique_ptr<PackageInstaller> createInstallerTree(
    const PackageNode &package, const InstallerFactory &make);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/installlocation.h"

#include <QString>

namespace nk::pm {

/// Lays a package's files down in its location, as InstallLocation::installFile() does, but looks
/// at the location's own directory once instead of once for each file. For the short life of a job,
/// on its thread.
class InstallDirectory
{
public:
    explicit InstallDirectory(const InstallLocation &location);

    /// InstallLocation::installFile(), but false for a name with a separator: a directory below a
    /// package's own belongs to another package.
    bool installFile(const QString &source, const QString &fileName) const;

private:
    const InstallLocation m_location;
    const QString m_path; // of the location's directory, whether or not it exists; empty if refused
};

} // namespace nk::pm

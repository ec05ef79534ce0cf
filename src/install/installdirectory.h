// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/installlocation.h"

#include <QString>

namespace nk::pm {

/// Lays many files down in one location, as InstallLocation::installFile() does, but looks at the
/// location's own directory once instead of once for each file. For the short life of a job, on its
/// thread.
class InstallDirectory
{
public:
    explicit InstallDirectory(const InstallLocation &location);

    /// InstallLocation::installFile().
    bool installFile(const QString &source, const QString &fileName) const;

private:
    const InstallLocation m_location;
    const QString m_path; // of the location's directory, whether or not it exists; empty if refused
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/installlocation.h"

#include <QLockFile>
#include <QString>

#include <memory>

namespace nk::pm {

/// One root directory below the data location: fresh, randomly named and locked for this object's
/// life. Shared by all locations below it and destroyed by the last of them, on whatever thread
/// that is. Its directory stays, for removeStaleLocations() of a later root.
class InstallLocationRoot
{
public:
    /// Creates and locks the directory and starts a sweep of stale ones on the global thread pool,
    /// unless one is under way. Failures are logged; the root is used all the same. Blocks for a
    /// second at most.
    InstallLocationRoot();

    /// The location on a new root, with the path ".".
    static InstallLocation createLocation();

    /// Absolute path of the root. A text and no QDir, which resolves its path at the first const
    /// call and so can't be read from several threads.
    const QString directory;

private:
    Q_DISABLE_COPY(InstallLocationRoot)

    void create();

    std::unique_ptr<QLockFile> m_lockFile; // null if the directory couldn't be created
};

} // namespace nk::pm

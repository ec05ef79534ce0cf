// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/localdirectory.h"
#include "sources/localmanifests.h"

#include <QString>

#include <vector>

namespace nk::pm {

/// One package of a directory tree, as the directories name it.
struct LocalPackageEntry
{
    QString id;
    QString type;
    LocalManifests::Slice manifest;
};

/// The packages below the directory \a path, in the order in which the file system lists them:
/// every directory with a readable "manifest.json". What lies below a package isn't looked at.
///
/// Symbolic links to directories are followed, but not one to a directory that the way to the link
/// leads through, and no more than 4,096 of those that lead to directories without a manifest; so
/// that the walk ends, whatever the links. Ends early when the application is closing down. Notes
/// in \a isWhole what can't be read, and passes it over. For worker threads.
std::vector<LocalPackageEntry> scanPackages(
    const QString &path, LocalManifests &manifests, WholeFlag &isWhole);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

#include <QStringList>

namespace nk::pm::publisher {

/// A directory below "packages" that holds a manifest.
struct PackageDirectory
{
    QString path; ///< relative to the catalogue's root
    QString type; ///< levels joined with ":"
    QString id;
};

/// Finds all package directories below "packages" of \a root, in the order of their paths. Follows
/// symbolic links to directories but never in a circle; hidden directories don't count, and nothing
/// below a package is a package.
QVector<PackageDirectory> findPackages(const QString &root, Problems &problems);

/// The names of the files that the installer of a package lays down, sorted: all regular files of
/// the directory \a path, relative to \a root, but its manifest and hidden ones. A sub-directory
/// gets a warning, anything else an error.
QStringList packageFileNames(const QString &root, const QString &path, Problems &problems);

/// The names of the "*.json" files of the directory \a path, relative to \a root, sorted. A
/// directory that doesn't exist has none.
QStringList recordFileNames(const QString &root, const QString &path, Problems &problems);

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "catalogue/catalogue.h"
#include "catalogue/problems.h"

#include <QStringList>

namespace nk::pm::publisher {

/// Where symbolic links of a catalogue may lead.
enum class Links {
    Within,   ///< to what is in the catalogue; others are errors
    Anywhere, ///< somebody has looked at them
};

/// The directory of a catalogue, and what of it may be read.
class CatalogueRoot
{
public:
    CatalogueRoot(const QString &path, Links links);

    QString path() const { return m_path; }
    QString absolute(const QString &relative) const { return m_path + u'/' + relative; }
    /// Whether the link at \a relative leads to what may not be read.
    bool isForbidden(const QString &relative) const;

private:
    QString m_path; // absolute
    QString m_real; // without links, with "/" at its end; empty if links may lead anywhere
};

/// A directory below "packages" that holds a manifest.
struct PackageDirectory
{
    QString path; ///< relative to the catalogue's root
    QString type; ///< levels joined with ":"
    QString id;
};

/// Finds all package directories below "packages" of \a root, in the order of their paths. Follows
/// symbolic links to directories, each directory once; hidden directories don't count, and nothing
/// below a package is a package.
QVector<PackageDirectory> findPackages(const CatalogueRoot &root, Problems &problems);

/// The names of the files that the installer of a package lays down, sorted: all regular files of
/// the directory \a path, relative to \a root, but its manifest and hidden ones. A sub-directory
/// gets a warning, anything else an error.
QStringList packageFileNames(const CatalogueRoot &root, const QString &path, Problems &problems);

/// The names of the "*.json" files of the directory \a path, relative to \a root, sorted. A
/// directory that doesn't exist has none.
QStringList recordFileNames(const CatalogueRoot &root, const QString &path, Problems &problems);

} // namespace nk::pm::publisher

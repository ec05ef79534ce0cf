// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packageaccessor.h"

#include <QByteArray>
#include <QString>
#include <QVector>

namespace nk::pm::publisher {

/// One file of a package.
struct PackageFile
{
    QString name;      ///< file name in the package's directory
    QByteArray digest; ///< the 28 bytes of the content's SHA-224; empty until it was hashed
    qint64 size = 0;   ///< bytes that were hashed
};

/// One package directory.
struct CataloguePackage
{
    QString id;
    QString type;               ///< levels joined with ":"
    QString directory;          ///< relative to the catalogue's root
    QByteArray manifest;        ///< canonical JSON text of the manifest
    QVector<PackageFile> files; ///< by name

    QString manifestFile() const { return directory + QStringLiteral("/manifest.json"); }
    QString filePath(const PackageFile &file) const { return directory + u'/' + file.name; }
};

/// One file of the dictionary.
struct CatalogueKeyword
{
    QString file; ///< relative to the catalogue's root
    KeywordInfo info;
};

/// One file below "links".
struct CatalogueLink
{
    QString file; ///< relative to the catalogue's root
    LinkInfo info;
};

/// What a catalogue directory holds, in an order that depends on its content alone: packages and
/// keywords by identifier, links by the names of their files.
struct Catalogue
{
    QString root; ///< absolute path
    QVector<CataloguePackage> packages;
    QVector<CatalogueKeyword> keywords;
    QVector<CatalogueLink> links;

    QString absolutePath(const QString &relative) const { return root + u'/' + relative; }
};

} // namespace nk::pm::publisher

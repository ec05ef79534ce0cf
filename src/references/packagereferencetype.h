// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>

namespace nk::data {
class LinkedDocument;
}

namespace nk::pm {

class PackageReference;

/// How documents keep references to packages: by the package's identifier, which the document's
/// context turns into a live PackageReference if it implements IPackageProvider.
///
/// The application makes the type known to all documents once, at its start:
///
///   nk::data::LinkedDocument::registerReferenceType<PackageReferenceType, PackageReference>();
///
/// GUI thread.
class NK_PM_EXPORT PackageReferenceType
{
public:
    /// 1: the number that stands for this type in documents, so it is never to be changed.
    static int typeId();
    /// False: package references have one stored form only.
    static bool isLegacyReference();

    /// The reference's id as Latin-1. An id with other characters loses them, and is not found
    /// again.
    static QByteArray identifier(PackageReference *reference);
    /// The reference for \a identifier, as the context's provider gives it: the first call starts
    /// the package's install. Null without context or provider.
    static PackageReference *getReference(
        const nk::data::LinkedDocument *document, const QByteArray &identifier);
    /// Has the repository hold the reference for \a identifier, and so starts the package's
    /// install.
    static void attachReference(nk::data::LinkedDocument *document, const QByteArray &identifier);

    /// Nothing: references belong to the repository, whatever documents say.
    static void createReference(nk::data::LinkedDocument *document, PackageReference *reference);
    /// Nothing, likewise: the reference lives on.
    static void deleteReference(nk::data::LinkedDocument *document, PackageReference *reference);
};

} // namespace nk::pm

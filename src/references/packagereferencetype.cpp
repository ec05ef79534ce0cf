// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereferencetype.h"

#include "references/packagereference.h"
#include "repository/ipackageprovider.h"

#include <norvakdataabstraction/context.h>
#include <norvakdataabstraction/linkeddocument.h>

namespace nk::pm {

int PackageReferenceType::typeId()
{
    return 1;
}

bool PackageReferenceType::isLegacyReference()
{
    return false;
}

QByteArray PackageReferenceType::identifier(PackageReference *reference)
{
    return reference->id().toLatin1();
}

PackageReference *PackageReferenceType::getReference(
    const nk::data::LinkedDocument *document, const QByteArray &identifier)
{
    // Asks qt_metacast() for the interface's id. A null context gives null.
    auto *provider = qobject_cast<IPackageProvider *>(document->context());
    return provider ? provider->packageReference(QString::fromLatin1(identifier)) : nullptr;
}

void PackageReferenceType::attachReference(
    nk::data::LinkedDocument *document, const QByteArray &identifier)
{
    getReference(document, identifier);
}

void PackageReferenceType::createReference(nk::data::LinkedDocument *, PackageReference *)
{}

void PackageReferenceType::deleteReference(nk::data::LinkedDocument *, PackageReference *)
{}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "collection/collection.h"

#include "references/packagereference.h"
#include "references/packagereferencetype.h"
#include "repository/packagerepository.h"

namespace nk::pm::app {

CollectionContext::CollectionContext(PackageRepository *repository, QObject *parent)
    : nk::data::Context(parent)
    , m_repository(repository)
{}

PackageRepository *CollectionContext::packageRepository()
{
    return m_repository;
}

PackageReference *CollectionContext::packageReference(const QString &id)
{
    return m_repository->packageReference(id);
}

Collection::Collection(CollectionContext *context, QObject *parent)
    : nk::data::LinkedDocument(context, parent)
{
    registerReferenceType<PackageReferenceType, PackageReference>();
    m_field.setName(QStringLiteral("package"));
}

QStringList Collection::ids() const
{
    QStringList ids;
    for (const QString &key : structKeys()) {
        if (!getStructValue(key, m_field.name()).isUndefined())
            ids.append(key);
    }
    return ids;
}

QString Collection::add(PackageReference *reference)
{
    const QString id = reference->id();
    m_field.write(this, id, QVariant::fromValue<QObject *>(reference));
    // Reference strings are Latin-1: what has lost characters leads to another package, or nowhere.
    if (m_field.compare(m_field.read(this, id), QVariant::fromValue<QObject *>(reference)))
        return {};
    removeStruct(id);
    return QStringLiteral("'%1' can't be kept in a collection: its identifier has characters "
                          "beyond Latin-1")
        .arg(id);
}

bool Collection::remove(const QString &id)
{
    if (getStructValue(id, m_field.name()).isUndefined())
        return false;
    removeStruct(id);
    return true;
}

QVector<PackageReference *> Collection::references()
{
    QVector<PackageReference *> references;
    for (const QString &id : ids()) {
        if (auto *reference = m_field.read(this, id).value<PackageReference *>())
            references.append(reference);
    }
    return references;
}

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "references/packagereferencefield.h"
#include "repository/ipackageprovider.h"

#include <norvakdataabstraction/context.h>
#include <norvakdataabstraction/linkeddocument.h>

#include <QVector>

namespace nk::pm::app {

/// Leads the references of a collection to the packages of \a repository, which has to outlive it.
class CollectionContext : public nk::data::Context, public IPackageProvider
{
    Q_OBJECT
    Q_INTERFACES(nk::pm::IPackageProvider)

public:
    explicit CollectionContext(PackageRepository *repository, QObject *parent = nullptr);

    PackageRepository *packageRepository() override;
    PackageReference *packageReference(const QString &id) override;

private:
    PackageRepository *const m_repository;
};

/// Packages that the user has put together and keeps in a file. Each package is a struct of the
/// document, under its identifier, with the reference as "package"; whatever else a file holds is
/// kept. GUI thread.
class Collection : public nk::data::LinkedDocument
{
    Q_OBJECT

public:
    explicit Collection(CollectionContext *context, QObject *parent = nullptr);

    /// The packages' identifiers, in ascending order.
    QStringList ids() const;

    /// Puts \a reference in. Gives the reason why it can't be kept, or an empty text.
    QString add(PackageReference *reference);
    /// False if there is no such package in the collection.
    bool remove(const QString &id);

    /// The references of all packages; whatever isn't installed yet is being installed from now on.
    QVector<PackageReference *> references();

private:
    PackageReferenceField m_field;
};

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "references/packagereferencefield.h"
#include "repository/ipackageprovider.h"

#include <norvakdataabstraction/context.h>
#include <norvakdataabstraction/linkeddocument.h>

#include <QStringList>

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
/// document, under its identifier, with the reference as "package" and the place in the order of
/// adding as "position"; whatever else a file holds is kept. GUI thread.
class Collection : public nk::data::LinkedDocument
{
    Q_OBJECT

public:
    explicit Collection(CollectionContext *context, QObject *parent = nullptr);

    /// The packages' identifiers, in the order of adding. What a file holds without a place in that
    /// order comes first, in ascending order.
    QStringList ids() const;
    bool contains(const QString &id) const;

    /// Puts \a reference in, at the end; one that is there keeps its place. Gives the reason why it
    /// can't be kept, or an empty text.
    QString add(PackageReference *reference);
    /// False if there is no such package in the collection.
    bool remove(const QString &id);

    /// The reference of a package in the collection, which is being installed from now on, unless
    /// it is already. Null if the file has something else under that identifier.
    PackageReference *reference(const QString &id);

    /// As the document's, but for good: the file is on stable storage when this returns.
    bool save(const QString &path, QString *error) const;

    /// Whether the last file to be loaded was refused because it is of a newer version.
    bool isOfNewerVersion() const { return m_isOfNewerVersion; }

protected:
    bool setContent(const QJsonObject &content, QString *reason) override;
    QJsonObject content() const override;

private:
    double position(const QString &id) const;

    PackageReferenceField m_field;
    bool m_isOfNewerVersion = false;
};

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractListModel>
#include <QVector>

namespace nk::pm {
class PackageNode;
} // namespace nk::pm

namespace nk::pm::app {

class CatalogueProvider;
class Collection;
class InstallState;
class Installs;

/// The packages of a collection as a list to show and to edit, in the order of adding. A package
/// that the catalogue doesn't know keeps its row, and comes alive when a source brings it.
class CollectionModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        IdRole = Qt::UserRole, ///< "id"
        NameRole,              ///< "name", else the identifier
        TypeRole,              ///< "type"; empty for an unknown package
        PreviewRole,           ///< "preview", the URL of a picture; invalid if there is none
        StatusRole, ///< "status", a PackageReference::Status; Unknown if the entry can't be read
        ReasonRole, ///< "reason": the errors behind Incomplete; empty otherwise
    };

    CollectionModel(CatalogueProvider &provider, Installs &installs, QObject *parent = nullptr);

    /// Shows \a collection, which isn't owned, and has its packages installed.
    void setCollection(Collection *collection);
    /// Puts the package at the end, unless it is there. Gives why it can't be kept, or an empty
    /// text.
    QString add(const QString &id);
    /// False if there is no such package in the collection.
    bool remove(const QString &id);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        QString id;
        InstallState *state; ///< null if the entry can't be read
    };

    void appendRow(const QString &id);
    const PackageNode *node(const Row &row) const;
    void noteChange();

    CatalogueProvider &m_provider;
    Installs &m_installs;
    Collection *m_collection = nullptr;
    QVector<Row> m_rows;
};

} // namespace nk::pm::app

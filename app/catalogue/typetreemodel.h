// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QAbstractListModel>
#include <QSet>
#include <QStringList>
#include <QVector>

namespace nk::pm::app {

class CatalogueProvider;

/// The package types as a tree that can be opened and closed, flattened to the rows in sight. The
/// first row stands for all types.
class TypeTreeModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role {
        TypeRole = Qt::UserRole, ///< "type", the whole type; empty for all
        NameRole,                ///< "name", its last level
        DepthRole,               ///< "depth", 0 at the top
        PackagesRole,            ///< "packages", those of sub-types counted
        HasChildrenRole,         ///< "hasChildren"
        ExpandedRole,            ///< "expanded"
    };

    explicit TypeTreeModel(CatalogueProvider &provider, QObject *parent = nullptr);

    Q_INVOKABLE void setExpanded(int row, bool expanded);
    /// Row of \a type, -1 if it isn't in sight.
    Q_INVOKABLE int rowOf(const QString &type) const;
    Q_INVOKABLE QString typeAt(int row) const;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

private:
    struct Row
    {
        QStringList levels; // none for the row of all types
        int packages;
        bool hasChildren;
    };

    QVector<Row> rowsInSight() const;
    bool isInSight(QStringList levels) const;
    void update();

    CatalogueProvider &m_provider;
    QVector<Row> m_rows;
    QSet<QStringList> m_expanded;
};

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QSharedPointer>
#include <QString>
#include <QVector>

#include <utility>

namespace nk::pm {

class PackageIndex;
class PackageNode;

/// A result of PackageIndex::selectPackages(): nodes, and the index that keeps them alive.
///
/// A value with implicit sharing, safe to copy across threads. Holding a list is holding its index.
class NK_PM_EXPORT PackageList
{
public:
    /// An invalid, empty list.
    PackageList();
    /// The list that a query answers with; \a index must hold the nodes alive.
    PackageList(QSharedPointer<PackageIndex> index, const QVector<PackageNode *> &packages);

    /// Whether there is an index behind the list. A query for an unknown type gives an invalid
    /// list, one without a hit a valid, empty one.
    bool isValid() const { return !m_index.isNull(); }
    /// Number of nodes; 0 for an invalid list.
    int size() const { return m_packages.size(); }
    /// The node at \a i, unchecked.
    PackageNode const *operator[](int i) const { return m_packages.at(i); }
    /// For range-based for. Valid until the list is changed or gone.
    PackageNode const *const *begin() const { return m_packages.constData(); }
    /// One past the last node.
    PackageNode const *const *end() const { return m_packages.constData() + m_packages.size(); }
    /// Identifier of the node at \a i; empty outside the list.
    QString id(int i) const;

    /// Null for an invalid list.
    const QSharedPointer<PackageIndex> &index() const { return m_index; }
    /// The nodes in the order of the query.
    const QVector<PackageNode *> &packages() const & { return m_packages; }
    /// Of a list that is about to go. The nodes live only while somebody else holds the index.
    QVector<PackageNode *> packages() && { return std::move(m_packages); }
    /// The vector, for changing it in place.
    QVector<PackageNode *> &list() { return m_packages; }

private:
    QSharedPointer<PackageIndex> m_index;
    QVector<PackageNode *> m_packages;
};

} // namespace nk::pm

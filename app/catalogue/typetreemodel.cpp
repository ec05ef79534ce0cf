// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "typetreemodel.h"

#include "catalogueprovider.h"

#include <algorithm>
#include <iterator>

namespace nk::pm::app {
namespace {

QString joined(const QStringList &levels)
{
    return levels.join(QLatin1Char(':'));
}

bool isBelow(const QStringList &levels, const QStringList &parent)
{
    return levels.size() > parent.size() && levels.mid(0, parent.size()) == parent;
}

} // namespace

TypeTreeModel::TypeTreeModel(CatalogueProvider &provider, QObject *parent)
    : QAbstractListModel(parent)
    , m_provider(provider)
{
    connect(&provider, &CatalogueProvider::summaryChanged, this, &TypeTreeModel::update);
}

void TypeTreeModel::setExpanded(int row, bool expanded)
{
    if (row < 0 || row >= m_rows.size() || !m_rows.at(row).hasChildren)
        return;
    const QStringList levels = m_rows.at(row).levels;
    if (m_expanded.contains(levels) == expanded)
        return;
    if (expanded)
        m_expanded.insert(levels);
    else
        m_expanded.remove(levels);
    const QVector<Row> rows = rowsInSight();
    const int change = rows.size() - m_rows.size();
    if (change > 0)
        beginInsertRows(QModelIndex(), row + 1, row + change);
    else
        beginRemoveRows(QModelIndex(), row + 1, row - change);
    m_rows = rows;
    if (change > 0)
        endInsertRows();
    else
        endRemoveRows();
    Q_EMIT dataChanged(index(row), index(row), {ExpandedRole});
}

int TypeTreeModel::rowOf(const QString &type) const
{
    const auto row = std::find_if(m_rows.begin(), m_rows.end(), [&type](const Row &each) {
        return joined(each.levels) == type;
    });
    return row == m_rows.end() ? -1 : int(std::distance(m_rows.begin(), row));
}

QString TypeTreeModel::typeAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? joined(m_rows.at(row).levels) : QString();
}

int TypeTreeModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

QVariant TypeTreeModel::data(const QModelIndex &index, int role) const
{
    if (index.row() < 0 || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    switch (role) {
    case TypeRole:
        return joined(row.levels);
    case NameRole:
        return row.levels.isEmpty() ? QString() : row.levels.last();
    case DepthRole:
        return qMax(0, row.levels.size() - 1);
    case PackagesRole:
        return row.packages;
    case HasChildrenRole:
        return row.hasChildren;
    case ExpandedRole:
        return m_expanded.contains(row.levels);
    }
    return {};
}

QHash<int, QByteArray> TypeTreeModel::roleNames() const
{
    return {
        {TypeRole, QByteArrayLiteral("type")},
        {NameRole, QByteArrayLiteral("name")},
        {DepthRole, QByteArrayLiteral("depth")},
        {PackagesRole, QByteArrayLiteral("packages")},
        {HasChildrenRole, QByteArrayLiteral("hasChildren")},
        {ExpandedRole, QByteArrayLiteral("expanded")},
    };
}

QVector<TypeTreeModel::Row> TypeTreeModel::rowsInSight() const
{
    const IndexSummary &summary = m_provider.summary();
    const auto &counts = summary.packagesByType;
    QVector<Row> rows{{QStringList(), summary.packages, false}};
    for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
        if (!isInSight(it.key()))
            continue;
        const auto next = std::next(it);
        rows.append({it.key(), it.value(), next != counts.cend() && isBelow(next.key(), it.key())});
    }
    return rows;
}

bool TypeTreeModel::isInSight(QStringList levels) const
{
    for (levels.removeLast(); !levels.isEmpty(); levels.removeLast()) {
        if (!m_expanded.contains(levels))
            return false;
    }
    return true;
}

void TypeTreeModel::update()
{
    beginResetModel();
    m_rows = rowsInSight();
    endResetModel();
}

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "collectionmodel.h"

#include "catalogueprovider.h"
#include "installs.h"
#include "manifesttexts.h"

#include "collection/collection.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"

#include <QUrl>

#include <algorithm>

namespace nk::pm::app {

CollectionModel::CollectionModel(CatalogueProvider &provider, Installs &installs, QObject *parent)
    : QAbstractListModel(parent)
    , m_provider(provider)
    , m_installs(installs)
{
    connect(&provider, &CatalogueProvider::summaryChanged, this, &CollectionModel::noteChange);
    connect(&provider, &CatalogueProvider::textsChanged, this, &CollectionModel::noteChange);
}

void CollectionModel::setCollection(Collection *collection)
{
    const QStringList ids = collection->ids();
    QVector<PackageReference *> references;
    for (const QString &id : ids) {
        if (PackageReference *reference = collection->reference(id))
            references.append(reference);
    }
    m_installs.follow(references);

    beginResetModel();
    for (const Row &row : qAsConst(m_rows)) {
        if (row.state)
            row.state->disconnect(this);
    }
    m_rows.clear();
    m_collection = collection;
    for (const QString &id : ids)
        appendRow(id);
    endResetModel();
}

QString CollectionModel::add(const QString &id)
{
    PackageReference *reference = m_provider.packageReference(id);
    if (!reference || m_collection->contains(id))
        return {};
    QString fault = m_collection->add(reference);
    if (!fault.isEmpty())
        return fault;
    m_installs.follow({reference});
    beginInsertRows(QModelIndex(), m_rows.size(), m_rows.size());
    appendRow(id);
    endInsertRows();
    return {};
}

bool CollectionModel::remove(const QString &id)
{
    const auto row = std::find_if(
        m_rows.begin(), m_rows.end(), [&id](const Row &each) { return each.id == id; });
    if (row == m_rows.end())
        return false;
    const int position = int(row - m_rows.begin());
    beginRemoveRows(QModelIndex(), position, position);
    if (row->state)
        row->state->disconnect(this);
    m_collection->remove(id);
    m_rows.erase(row);
    endRemoveRows();
    return true;
}

int CollectionModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

QVariant CollectionModel::data(const QModelIndex &index, int role) const
{
    if (index.row() < 0 || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    const PackageNode *package = node(row);
    switch (role) {
    case IdRole:
        return row.id;
    case NameRole:
        return package ? packageTitle(*package) : row.id;
    case TypeRole:
        return package ? package->type().toString() : QString();
    case PreviewRole:
        return package ? packagePreview(*package) : QUrl();
    case StatusRole:
        return row.state ? row.state->status() : int(PackageReference::Unknown);
    case ReasonRole:
        return row.state ? row.state->reason() : QString();
    }
    return {};
}

QHash<int, QByteArray> CollectionModel::roleNames() const
{
    return {
        {IdRole, QByteArrayLiteral("id")},         {NameRole, QByteArrayLiteral("name")},
        {TypeRole, QByteArrayLiteral("type")},     {PreviewRole, QByteArrayLiteral("preview")},
        {StatusRole, QByteArrayLiteral("status")}, {ReasonRole, QByteArrayLiteral("reason")},
    };
}

void CollectionModel::appendRow(const QString &id)
{
    InstallState *state = m_collection->reference(id) ? m_installs.find(id) : nullptr;
    m_rows.append({id, state});
    if (state)
        connect(state, &InstallState::changed, this, &CollectionModel::noteChange);
}

/// Null while no source has the package.
const PackageNode *CollectionModel::node(const Row &row) const
{
    return row.state ? row.state->reference()->node() : nullptr;
}

void CollectionModel::noteChange()
{
    if (!m_rows.isEmpty())
        Q_EMIT dataChanged(index(0), index(m_rows.size() - 1));
}

} // namespace nk::pm::app

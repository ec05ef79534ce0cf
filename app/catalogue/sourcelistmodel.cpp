// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sourcelistmodel.h"

#include "catalogueprovider.h"
#include "preferences.h"

#include "sourcespec.h"

#include "sources/trustkey.h"

namespace nk::pm::app {
namespace {

const QString sourcesKey = QStringLiteral("sources");
constexpr QChar separator = QLatin1Char(' ');

} // namespace

SourceListModel::SourceListModel(
    CatalogueProvider &provider, Preferences &preferences, QObject *parent)
    : QAbstractListModel(parent)
    , m_provider(provider)
    , m_preferences(preferences)
{
    connect(&provider, &CatalogueProvider::sourcesChanged, this, &SourceListModel::update);
}

bool SourceListModel::trustsDevelopmentKey()
{
    return ledger::trustsDevelopmentKey();
}

QString SourceListModel::add(const QString &kind, const QString &location)
{
    const auto sourceKind = kindFromName(kind);
    if (!sourceKind)
        return tr("\"%1\" is no kind of source").arg(kind);
    QString fault = m_provider.addSource({*sourceKind, location.trimmed()});
    if (fault.isEmpty())
        remember();
    return fault;
}

void SourceListModel::remove(int row)
{
    m_provider.removeSource(row);
    remember();
}

void SourceListModel::restore()
{
    m_unopened.clear();
    const QStringList remembered = m_preferences.value(sourcesKey, QStringList()).toStringList();
    for (const QString &line : remembered) {
        const int blank = line.indexOf(separator);
        const auto kind = kindFromName(line.left(blank));
        const QString location = line.mid(blank + 1);
        if (!kind || !m_provider.restoreSource({*kind, location}))
            m_unopened.append(line);
    }
}

/// As the user sees them: passwords aren't written down.
void SourceListModel::remember()
{
    QStringList lines = m_unopened;
    for (const auto &source : m_provider.sources())
        lines.append(source->source()->kind() + separator + source->source()->location());
    m_preferences.setValue(sourcesKey, lines);
}

int SourceListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

QVariant SourceListModel::data(const QModelIndex &index, int role) const
{
    if (index.row() < 0 || index.row() >= m_provider.sourceCount())
        return {};
    const OpenSource &source = *m_provider.sources()[size_t(index.row())];
    switch (role) {
    case KindRole:
        return source.source()->kind();
    case LocationRole:
        return source.source()->location();
    case PackagesRole: {
        int packages = 0;
        const auto &counts = m_provider.summary().packagesBySnapshot;
        for (auto it = counts.cbegin(); it != counts.cend(); ++it) {
            if (m_provider.ownerOf(it.key()) == source.source())
                packages += it.value();
        }
        return packages;
    }
    case LastUpdateRole:
        return source.lastUpdate();
    case FaultRole:
        return m_provider.currentFault(source);
    }
    return {};
}

QHash<int, QByteArray> SourceListModel::roleNames() const
{
    return {
        {KindRole, QByteArrayLiteral("kind")},
        {LocationRole, QByteArrayLiteral("location")},
        {PackagesRole, QByteArrayLiteral("packages")},
        {LastUpdateRole, QByteArrayLiteral("lastUpdate")},
        {FaultRole, QByteArrayLiteral("fault")},
    };
}

void SourceListModel::update()
{
    if (m_rows != m_provider.sourceCount()) {
        beginResetModel();
        m_rows = m_provider.sourceCount();
        endResetModel();
    } else if (m_rows > 0) {
        Q_EMIT dataChanged(index(0), index(m_rows - 1));
    }
}

} // namespace nk::pm::app

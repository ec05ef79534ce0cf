// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogueprovider.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"

#include <QCoreApplication>
#include <QEvent>
#include <QQmlEngine>
#include <QtConcurrent>

#include <algorithm>

namespace nk::pm::app {

CatalogueProvider::CatalogueProvider(QObject *parent)
    : QObject(parent)
    , m_repository(std::make_unique<PackageRepository>(PackageRepository::PersistSources))
{
    connect(
        m_repository.get(), &PackageRepository::packageIndexChanged, this,
        &CatalogueProvider::startSummary);
    connect(&m_watcher, &QFutureWatcherBase::finished, this, &CatalogueProvider::finishSummary);
    QCoreApplication::instance()->installEventFilter(this);
}

CatalogueProvider::~CatalogueProvider()
{
    for (const auto &source : m_sources)
        m_repository->removeSource(source->source());
}

PackageReference *CatalogueProvider::packageReference(const QString &id)
{
    PackageReference *reference = m_repository->packageReference(id);
    if (reference)
        QQmlEngine::setObjectOwnership(reference, QQmlEngine::CppOwnership);
    return reference;
}

QString CatalogueProvider::addSource(const SourceSpec &spec)
{
    QString fault = faultOf(spec);
    if (fault.isEmpty())
        openSource(spec);
    return fault;
}

bool CatalogueProvider::restoreSource(const SourceSpec &spec)
{
    if (spec.kind != SourceKind::Local && !faultOf(spec).isEmpty())
        return false;
    openSource(spec);
    return true;
}

/// Nothing if it is open already.
void CatalogueProvider::openSource(const SourceSpec &spec)
{
    auto source = std::make_unique<OpenSource>(spec, m_owners);
    for (const auto &other : m_sources) {
        if (other->source()->kind() == source->source()->kind()
            && other->source()->location() == source->source()->location())
            return;
    }
    connect(source.get(), &OpenSource::stateChanged, this, &CatalogueProvider::sourcesChanged);
    m_repository->addSource(source->source());
    m_sources.push_back(std::move(source));
    Q_EMIT sourcesChanged();
}

void CatalogueProvider::removeSource(int position)
{
    if (position < 0 || position >= sourceCount())
        return;
    m_repository->removeSource(m_sources[size_t(position)]->source());
    m_sources.erase(m_sources.begin() + position);
    Q_EMIT sourcesChanged();
}

const TrackedSource *CatalogueProvider::sourceOf(const PackageNode *node) const
{
    return ownerOf(node->accessor());
}

const TrackedSource *CatalogueProvider::ownerOf(const PackageAccessor *snapshot) const
{
    return m_owners.value(snapshot);
}

QString CatalogueProvider::currentFault(const OpenSource &source) const
{
    QString fault = source.fault();
    if (!fault.isEmpty())
        return fault;
    for (const PackageAccessor *snapshot : m_summary.refused) {
        if (ownerOf(snapshot) == source.source())
            return source.source()->refusalOf(*snapshot);
    }
    return {};
}

void CatalogueProvider::refresh()
{
    for (const auto &source : m_sources)
        source->refresh();
}

int CatalogueProvider::faultCount() const
{
    return int(std::count_if(m_sources.begin(), m_sources.end(), [this](const auto &source) {
        return !currentFault(*source).isEmpty();
    }));
}

QDateTime CatalogueProvider::lastUpdate() const
{
    QDateTime last;
    for (const auto &source : m_sources) {
        const QDateTime time = source->lastUpdate();
        if (time.isValid() && (!last.isValid() || time > last))
            last = time;
    }
    return last;
}

bool CatalogueProvider::translationsArePending()
{
    const auto packages = PackageIndex::selectPackages(
        m_repository->packageIndex(), QStringLiteral("translation"), {}, {});
    return std::any_of(packages.begin(), packages.end(), [this](const PackageNode *package) {
        const PackageReference *reference = packageReference(package->id().toString());
        // Null for a package without an identifier.
        return reference && reference->status() == PackageReference::Installing;
    });
}

bool CatalogueProvider::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::LanguageChange && watched == QCoreApplication::instance()) {
        ++m_textGeneration;
        Q_EMIT textsChanged();
    }
    return false;
}

void CatalogueProvider::startSummary()
{
    m_watcher.setFuture(QtConcurrent::run(summarize, m_repository->packageIndex()));
}

void CatalogueProvider::finishSummary()
{
    m_summary = m_watcher.result();
    Q_EMIT summaryChanged();
    Q_EMIT sourcesChanged(); // their faults, if something was refused
}

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "indexsummary.h"

#include "opensource.h"

#include "repository/ipackageprovider.h"
#include "repository/packagerepository.h"

#include <QDateTime>
#include <QFutureWatcher>
#include <QObject>

#include <memory>
#include <vector>

namespace nk::pm {
class PackageNode;
class PackageReference;
} // namespace nk::pm

namespace nk::pm::app {

/// The application's repository and its sources, handed to every object that QML declares.
class CatalogueProvider : public QObject, public IPackageProvider
{
    Q_OBJECT
    Q_INTERFACES(nk::pm::IPackageProvider)
    Q_PROPERTY(bool ready READ isReady NOTIFY summaryChanged)
    Q_PROPERTY(int packageCount READ packageCount NOTIFY summaryChanged)
    Q_PROPERTY(int keywordCount READ keywordCount NOTIFY summaryChanged)
    Q_PROPERTY(int sourceCount READ sourceCount NOTIFY sourcesChanged)
    Q_PROPERTY(int faultCount READ faultCount NOTIFY sourcesChanged)
    Q_PROPERTY(QDateTime lastUpdate READ lastUpdate NOTIFY sourcesChanged)
    Q_PROPERTY(int textGeneration READ textGeneration NOTIFY textsChanged)

public:
    using Sources = std::vector<std::unique_ptr<OpenSource>>;

    explicit CatalogueProvider(QObject *parent = nullptr);
    ~CatalogueProvider() override;

    PackageRepository *packageRepository() override { return m_repository.get(); }
    Q_INVOKABLE nk::pm::PackageReference *packageReference(const QString &id) override;

    /// Adds the source, unless it is there already. Gives what is wrong with it, or an empty text.
    QString addSource(const SourceSpec &spec);
    /// The same for one that was added before. A directory that isn't there now is added all the
    /// same, with that as its fault, since it may come back. False for what can be no source.
    bool restoreSource(const SourceSpec &spec);
    /// Removes a source of sources().
    void removeSource(int position);
    const Sources &sources() const { return m_sources; }
    /// The source that \a node of the current index comes from; null if it was removed meanwhile.
    const TrackedSource *sourceOf(const PackageNode *node) const;
    /// The source that gave \a snapshot, which the current index holds.
    const TrackedSource *ownerOf(const PackageAccessor *snapshot) const;

    /// Why the last refresh of \a source failed, or what it brought was refused; empty if neither.
    QString currentFault(const OpenSource &source) const;

    /// Has every source look for new data.
    Q_INVOKABLE void refresh();

    /// The counts of the newest counted index, which it holds.
    const IndexSummary &summary() const { return m_summary; }

    /// Whether an index is there, its counts with it.
    bool isReady() const { return !m_summary.index.isNull(); }
    int packageCount() const { return m_summary.packages; }
    int keywordCount() const { return m_summary.keywords; }
    int sourceCount() const { return int(m_sources.size()); }
    /// Sources that have a fault.
    int faultCount() const;
    /// When the source updated last was found to be up to date.
    QDateTime lastUpdate() const;
    /// Counts up whenever translated texts of packages may read otherwise: no model tells of that,
    /// so bindings that show such texts name this property.
    int textGeneration() const { return m_textGeneration; }

    /// Whether translation packages are still on their way.
    bool translationsArePending();

    /// Watches the application for new translations.
    bool eventFilter(QObject *watched, QEvent *event) override;

Q_SIGNALS:
    void summaryChanged();
    void sourcesChanged();
    void textsChanged();

private:
    void openSource(const SourceSpec &spec);
    void startSummary();
    void finishSummary();

    SnapshotOwners m_owners;
    Sources m_sources; // outlive the repository
    std::unique_ptr<PackageRepository> m_repository;
    IndexSummary m_summary;
    QFutureWatcher<IndexSummary> m_watcher;
    int m_textGeneration = 0;
};

} // namespace nk::pm::app

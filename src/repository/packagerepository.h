// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QObject>
#include <QScopedPointer>
#include <QSharedPointer>

namespace nk::pm {

class PackageIndex;
class PackageReference;
class PackageSource;
struct PackageRepositoryPrivate;

/// The centre of the library: keeps the sources, owns the current index, hands out references.
///
/// A source that reports new data leads to a new index, built on the global thread pool and swapped
/// in on the GUI thread. All operations belong to the GUI thread, and none of them waits. A
/// repository may be destroyed at any moment, also during a build.
class NK_PM_EXPORT PackageRepository : public QObject
{
    Q_OBJECT

public:
    /// What becomes of the sources' data after each update.
    enum SourcePersistencePolicy {
        PersistSources = 0,      ///< sources persist after each update, for a start without network
        DoNotPersistSources = 1, ///< for a passing purpose that leaves no trace
    };
    Q_ENUM(SourcePersistencePolicy)

    /// Starts nothing; the first update comes with the first addSource().
    explicit PackageRepository(SourcePersistencePolicy policy, QObject *parent = nullptr);
    ~PackageRepository() override;

    /// Adds \a source, which isn't owned, and queues an update. A source that is deleted counts as
    /// removed. Null or a source that is there already is ignored.
    void addSource(PackageSource *source);
    /// Removes \a source and queues an update. Null or an unknown source is ignored.
    void removeSource(PackageSource *source);

    /// The current index, null until the first update has finished. The pointer keeps that index
    /// alive however many updates follow.
    QSharedPointer<PackageIndex> packageIndex() const;

    /// Calls PackageSource::persist() on every source, by ascending priority.
    void persistSources();
    /// As given to the constructor. It doesn't keep persistSources() from doing its work.
    SourcePersistencePolicy persistencePolicy() const;

    /// Asks every source to refresh itself, at most every 120 seconds; other calls do nothing.
    void scheduleSourceUpdate();

    /// The one reference for package \a id, made at the first call, which starts the package's
    /// install. Owned by the repository and alive as long as it. Null for an empty \a id.
    PackageReference *packageReference(const QString &id);

Q_SIGNALS:
    /// A new index is in place.
    void packageIndexChanged();

private Q_SLOTS:
    void scheduleUpdate();
    void update();
    void finishUpdate();
    void loadTranslations();

private:
    QScopedPointer<PackageRepositoryPrivate> d;
};

} // namespace nk::pm

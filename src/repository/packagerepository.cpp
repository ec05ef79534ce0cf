// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packagerepository.h"

#include "closing/closingdown.h"
#include "index/packageindex.h"
#include "repository/packagerepository_p.h"
#include "repository/packagesource.h"

#include <QCoreApplication>
#include <QPointer>
#include <QThread>
#include <QtConcurrent>

#include <algorithm>
#include <chrono>

namespace nk::pm {

namespace {

constexpr std::chrono::nanoseconds sourceUpdateInterval = std::chrono::seconds(120);

/// An index of 50,000 packages takes some frames' time to free: whoever lets go of it last, the GUI
/// thread doesn't do that.
void freeIndex(PackageIndex *index)
{
    const QCoreApplication *application = QCoreApplication::instance();
    if (application && application->thread() == QThread::currentThread() && !isClosingDown())
        QtConcurrent::run([index] { delete index; });
    else
        delete index;
}

} // namespace

PackageRepository::PackageRepository(SourcePersistencePolicy policy, QObject *parent)
    : QObject(parent)
    , d(new PackageRepositoryPrivate{
          this,
          {},
          {},
          new PackageRepositoryPrivate::IndexWatcher(this),
          {},
          false,
          policy,
          QDeadlineTimer(Qt::CoarseTimer),
          {}})
{
    waitForJobsAtExit();
    connect(
        d->watcher, &PackageRepositoryPrivate::IndexWatcher::finished, this,
        &PackageRepository::finishUpdate);
    // Before anybody else can connect: who reads texts at a new index reads translated ones.
    connect(
        this, &PackageRepository::packageIndexChanged, this, &PackageRepository::loadTranslations);
}

PackageRepository::~PackageRepository()
{
    // Nothing may come back once d is gone, not from a listener of destroyed() either. A running
    // build holds its index itself and ends unseen.
    d->watcher->disconnect(this);
    for (PackageSource *source : qAsConst(d->sources))
        source->disconnect(this);
}

void PackageRepository::addSource(PackageSource *source)
{
    if (!source || d->sources.contains(source))
        return;
    d->sources.append(source);
    connect(source, &PackageSource::updateRequired, this, &PackageRepository::scheduleUpdate);
    connect(source, &QObject::destroyed, this, [this, source] {
        d->sources.removeOne(source);
        scheduleUpdate();
    });
    std::sort(
        d->sources.begin(), d->sources.end(), [](const PackageSource *a, const PackageSource *b) {
            return a->priority() < b->priority();
        });
    scheduleUpdate();
}

void PackageRepository::removeSource(PackageSource *source)
{
    if (!source || !d->sources.removeOne(source))
        return;
    source->disconnect(this);
    scheduleUpdate();
}

QSharedPointer<PackageIndex> PackageRepository::packageIndex() const
{
    return d->packageIndex;
}

void PackageRepository::persistSources()
{
    d->forEachSource([](PackageSource *source) { source->persist(); });
}

PackageRepository::SourcePersistencePolicy PackageRepository::persistencePolicy() const
{
    return d->persistencePolicy;
}

void PackageRepository::scheduleSourceUpdate()
{
    if (!d->sourceUpdateDeadline.hasExpired())
        return;
    // Set first, since a source's answer may lead back here.
    d->sourceUpdateDeadline.setPreciseRemainingTime(
        0, sourceUpdateInterval.count(), Qt::CoarseTimer);
    d->forEachSource([](PackageSource *source) { source->update(); });
}

void PackageRepository::scheduleUpdate()
{
    if (d->updateScheduled)
        return;
    d->updateScheduled = true;
    QMetaObject::invokeMethod(this, "update", Qt::QueuedConnection);
}

void PackageRepository::update()
{
    d->updateScheduled = false;
    QSharedPointer<PackageIndex> index(new PackageIndex, freeIndex);
    if (!d->forEachSource([&index](PackageSource *source) { index->addSource(source); }))
        return;
    d->watcher->setFuture(QtConcurrent::run([index] {
        index->build();
        return index;
    }));
}

void PackageRepository::finishUpdate()
{
    const QPointer<PackageRepository> self(this);
    d->packageIndex = d->watcher->result();
    if (d->persistencePolicy == PersistSources)
        persistSources();
    if (!self)
        return;
    Q_EMIT packageIndexChanged();
}

} // namespace nk::pm

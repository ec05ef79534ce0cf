// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storecare.h"

#include "install/caretask.h"
#include "install/filestore.h"
#include "install/stalelocations.h"
#include "install/storecheck.h"
#include "install/storecleaning.h"
#include "install/storefetch.h"
#include "install/storemending.h"

#include <QFile>
#include <QFutureWatcher>
#include <QPointer>
#include <QTimer>
#include <QtConcurrent>

#include <algorithm>
#include <utility>

namespace nk::pm {

namespace {

constexpr int progressInterval = 100; // milliseconds

/// What a step of a task gives the next.
struct Findings
{
    StoreReport report;
    QVector<DamagedFile> damaged; ///< as in the report, one for one
};

/// What a step works on, on a disk thread.
struct Work
{
    QString directory;
    QString lockPath;
    std::shared_ptr<CareTask> task;

    Findings measure() const { return close({}); }
    Findings verify() const;
    Findings moveOut() const;
    Findings mend(Findings findings) const;
    Findings clean(qint64 maximumBytes) const;

private:
    Findings check() const;
    Findings close(Findings findings) const;
};

StoreDamage asDamage(const DamagedFile &file)
{
    const auto state = file.isInStore ? StoreDamage::InStore : StoreDamage::Removed;
    return {state, file.file.digest, file.paths, {}};
}

Findings Work::check() const
{
    StoreCheck check = checkStore(directory, *task);
    Findings findings;
    findings.report.unreadable = check.unreadable;
    findings.report.unknown = check.unknown;
    findings.damaged = check.damaged;
    return findings;
}

Findings Work::close(Findings findings) const
{
    StoreReport &report = findings.report;
    if (task->goesOn())
        report.usage = usageOf(takeCensus(directory, *task), usedLocations(), *task);
    if (!task->goesOn()) {
        report.outcome = StoreReport::Cancelled;
        report.usage = {};
    }
    return findings;
}

Findings Work::verify() const
{
    Findings findings = check();
    findInstalled(findings.damaged, installLocations(), *task);
    for (const DamagedFile &file : qAsConst(findings.damaged)) {
        if (file.isInStore || !file.paths.isEmpty())
            findings.report.damages.append(asDamage(file));
    }
    return close(findings);
}

/// Only then is it known where the damaged files are installed: nobody links them any more.
Findings Work::moveOut() const
{
    Findings findings = check();
    QVector<DamagedFile> &damaged = findings.damaged;
    const auto isGone = [](DamagedFile &file) { return file.isInStore && !nk::pm::moveOut(file); };
    damaged.erase(std::remove_if(damaged.begin(), damaged.end(), isGone), damaged.end());
    findInstalled(damaged, installLocations(), *task);
    for (const DamagedFile &file : qAsConst(damaged))
        findings.report.damages.append(asDamage(file));
    return findings;
}

Findings Work::mend(Findings findings) const
{
    for (int i = 0; i < findings.damaged.size() && task->goesOn(); ++i) {
        DamagedFile &file = findings.damaged[i];
        StoreDamage &damage = findings.report.damages[i];
        const QString good = directory + QLatin1Char('/') + file.file.digest.left(2)
                             + QLatin1Char('/') + file.file.digest.mid(2);
        const bool isThere = QFile::exists(good);
        if (isThere || file.paths.isEmpty())
            damage.mendedPaths = replaceInstalled(file, good);
        if (isThere)
            damage.state = StoreDamage::Replaced;
        damage.damagedPaths = file.paths;
    }
    return close(findings);
}

Findings Work::clean(qint64 maximumBytes) const
{
    removeStaleLocations();
    Findings findings;
    cleanStore(directory, lockPath, usedLocations(), maximumBytes, *task, findings.report);
    return close(findings);
}

} // namespace

bool StoreReport::isWhole() const
{
    return unreadable.isEmpty()
           && std::all_of(damages.begin(), damages.end(), [](const StoreDamage &damage) {
                  return damage.state != StoreDamage::InStore && damage.damagedPaths.isEmpty();
              });
}

struct StoreCarePrivate
{
    using Watcher = QFutureWatcher<Findings>;
    using Step = std::function<Findings(const Work &)>;
    using Sequel = void (StoreCarePrivate::*)(const Findings &);

    StoreCare *q;
    QSharedPointer<FileStore> store = FileStore::instance();
    std::shared_ptr<CareTask> task{}; ///< null if there is none
    QTimer *timer = new QTimer(q);    ///< of the progress
    FileFinder finder{};
    Findings findings{};               ///< of a repair, while it fetches
    StoreFetch *fetching = nullptr;    ///< likewise
    std::shared_ptr<StoreLock> hold{}; ///< likewise: what came stays until it is linked
    StoreReport report{};
    QObject context{}; ///< of what calls back

    void begin(const Step &step, Sequel sequel);
    void run(const Step &step, Sequel sequel);
    void fetch(const Findings &found);
    void mend();
    void finish(const Findings &last);
    StoreProgress progress() const;
};

void StoreCarePrivate::begin(const Step &step, Sequel sequel)
{
    if (task)
        return;
    task = std::make_shared<CareTask>();
    report = {};
    timer->start(progressInterval);
    run(step, sequel);
}

/// Has a disk thread do \a step, and goes on with \a sequel.
void StoreCarePrivate::run(const Step &step, Sequel sequel)
{
    auto *watcher = new Watcher(q);
    QObject::connect(watcher, &QFutureWatcherBase::finished, &context, [this, watcher, sequel] {
        watcher->deleteLater();
        (this->*sequel)(watcher->result());
    });
    const Work work{store->directory(), store->lockPath(), task};
    watcher->setFuture(QtConcurrent::run(diskThreads(), [step, work] { return step(work); }));
}

void StoreCarePrivate::fetch(const Findings &found)
{
    findings = found;
    QStringList digests;
    for (const DamagedFile &file : found.damaged) {
        if (!store->contains(file.file.digest) && !digests.contains(file.file.digest))
            digests.append(file.file.digest);
    }
    task->files = 0;
    task->bytes = 0;
    task->totalFiles = digests.size();
    task->totalBytes = 0;
    hold = store->hold();
    fetching = new StoreFetch(store, digests, std::exchange(finder, {}), task, q);
    QObject::connect(fetching, &StoreFetch::finished, &context, [this] { mend(); });
}

void StoreCarePrivate::mend()
{
    fetching->disconnect(&context);
    std::exchange(fetching, nullptr)->deleteLater();
    const Findings found = std::exchange(findings, {});
    const auto mending = [found, held = std::exchange(hold, {})](const Work &work) {
        return work.mend(found);
    };
    run(mending, &StoreCarePrivate::finish);
}

void StoreCarePrivate::finish(const Findings &last)
{
    const StoreProgress whole = progress();
    timer->stop();
    task.reset();
    report = last.report;
    const QPointer<StoreCare> self(q); // whoever hears of the progress may delete it
    Q_EMIT q->progressed(whole);
    if (self)
        Q_EMIT self->finished();
}

StoreProgress StoreCarePrivate::progress() const
{
    return {task->files, task->totalFiles, task->bytes, task->totalBytes};
}

StoreCare::StoreCare(QObject *parent)
    : QObject(parent)
    , d(new StoreCarePrivate{this})
{
    connect(d->timer, &QTimer::timeout, &d->context, [this] { Q_EMIT progressed(d->progress()); });
}

StoreCare::~StoreCare()
{
    if (d->task)
        d->task->isCancelled = true;
}

void StoreCare::measure()
{
    d->begin([](const Work &work) { return work.measure(); }, &StoreCarePrivate::finish);
}

void StoreCare::verify()
{
    d->begin([](const Work &work) { return work.verify(); }, &StoreCarePrivate::finish);
}

void StoreCare::repair(const FileFinder &finder)
{
    if (isRunning())
        return;
    d->finder = finder;
    d->begin([](const Work &work) { return work.moveOut(); }, &StoreCarePrivate::fetch);
}

void StoreCare::clean(qint64 maximumBytes)
{
    d->begin(
        [maximumBytes](const Work &work) { return work.clean(maximumBytes); },
        &StoreCarePrivate::finish);
}

bool StoreCare::isRunning() const
{
    return d->task != nullptr;
}

void StoreCare::cancel()
{
    if (d->task)
        d->task->isCancelled = true;
    if (d->fetching)
        d->mend();
}

StoreReport StoreCare::report() const
{
    return d->report;
}

} // namespace nk::pm

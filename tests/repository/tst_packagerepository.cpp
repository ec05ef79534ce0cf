// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "repository/packagerepository.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QSemaphore>
#include <QtConcurrent>
#include <QtTest>

#include <atomic>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// Writes down what a repository asks of it.
class LoggedSource : public MemorySource
{
public:
    LoggedSource(const QString &name, int priority, QStringList &log)
        : MemorySource(priority)
        , m_name(name)
        , m_log(log)
    {
        catalogue.package("shared", name).package("only " + name);
    }

    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        m_log << "getAccessor " + m_name;
        return MemorySource::getAccessor();
    }
    void persist() override { m_log << "persist " + m_name; }
    void update() override
    {
        m_log << "update " + m_name;
        if (onUpdate)
            onUpdate();
    }
    int listeners() const { return receivers(SIGNAL(updateRequired())); }

    std::function<void()> onUpdate;

private:
    const QString m_name;
    QStringList &m_log;
};

/// Where the reading of a snapshot waits, and what is told of the snapshot's end.
struct Gate
{
    QSemaphore entered;
    QSemaphore open;
    QSemaphore gone;
    std::atomic<QThread *> goneOn{nullptr};
};

class GatedAccessor : public MemoryAccessor
{
public:
    GatedAccessor(const MemoryCatalogue &catalogue, const QSharedPointer<Gate> &gate)
        : MemoryAccessor(catalogue)
        , m_gate(gate)
    {}
    ~GatedAccessor() override
    {
        m_gate->goneOn = QThread::currentThread();
        m_gate->gone.release();
    }
    void load() override
    {
        m_gate->entered.release();
        m_gate->open.acquire();
    }

private:
    const QSharedPointer<Gate> m_gate;
};

/// The next snapshot of \a source takes as long to read as the test wants.
QSharedPointer<Gate> holdNextSnapshot(MemorySource &source)
{
    auto gate = QSharedPointer<Gate>::create();
    source.accessorMaker = [gate, &source] {
        source.accessorMaker = nullptr;
        return std::make_unique<GatedAccessor>(source.catalogue, gate);
    };
    return gate;
}

/// Lets what is due or running come to its end.
void settle()
{
    QCoreApplication::processEvents();
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
}

} // namespace

/// The update cycle: what is asked of the sources and when, and which index is seen.
class PackageRepositoryTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    void startsEmptyAndIdle();
    void oneTurnCostsOneUpdate();
    void cycleRunsInOrder_data();
    void cycleRunsInOrder();
    void removedAndDeletedSourcesAreForgotten();
    void heldIndexOutlivesUpdateAndSource();
    void indexDoesNotDieOnTheGuiThread();
    void onlyTheNewestBuildIsSeen();
    void sourcesRefreshAtMostOnceInTwoMinutes();
    void sourceMayLeaveWhileItIsAsked();
    void mayBeDestroyedDuringABuild();
    void indexIsReadFromThreadsDuringUpdates();
};

void PackageRepositoryTest::startsEmptyAndIdle()
{
    PackageRepository repository(PackageRepository::PersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    repository.addSource(nullptr);
    repository.removeSource(nullptr);
    MemorySource stranger;
    repository.removeSource(&stranger);
    settle();
    QVERIFY(repository.packageIndex().isNull());
    QCOMPARE(spy.count(), 0);
    QCOMPARE(repository.persistencePolicy(), PackageRepository::PersistSources);
}

void PackageRepositoryTest::oneTurnCostsOneUpdate()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    MemorySource sources[3];
    for (int i = 0; i < 3; ++i) {
        sources[i].catalogue.package(QString::number(i));
        repository.addSource(&sources[i]);
        repository.addSource(&sources[i]); // already there
    }
    for (int i = 0; i < 10; ++i)
        sources[i % 3].publish();
    QCOMPARE(spy.count(), 0);
    QTRY_COMPARE(spy.count(), 1);
    settle();
    QCOMPARE(spy.count(), 1);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(sources[i].log().loads.load(), 1);
        QVERIFY(packageOf(repository.packageIndex(), QString::number(i)));
    }
}

void PackageRepositoryTest::cycleRunsInOrder_data()
{
    Columns<PackageRepository::SourcePersistencePolicy, QStringList>("policy", "persisting")
        .row(
            "with persistence", PackageRepository::PersistSources,
            {"persist low", "persist mid", "persist high"})
        .row("without", PackageRepository::DoNotPersistSources, {});
}

void PackageRepositoryTest::cycleRunsInOrder()
{
    QFETCH(PackageRepository::SourcePersistencePolicy, policy);
    QFETCH(QStringList, persisting);
    QStringList log;
    LoggedSource high("high", 3, log);
    LoggedSource low("low", 0, log);
    LoggedSource mid("mid", 2, log);
    PackageRepository repository(policy);
    connect(&repository, &PackageRepository::packageIndexChanged, this, [&] {
        log << "packageIndexChanged " + packageOf(repository.packageIndex(), "shared")->type();
    });
    for (LoggedSource *source : {&mid, &high, &low})
        repository.addSource(source);
    const QStringList snapshots{"getAccessor low", "getAccessor mid", "getAccessor high"};
    QTRY_COMPARE(log, snapshots + persisting + QStringList{"packageIndexChanged high"});

    log.clear();
    repository.persistSources();
    QCOMPARE(log, (QStringList{"persist low", "persist mid", "persist high"}));
    log.clear();
    repository.scheduleSourceUpdate();
    QCOMPARE(log, (QStringList{"update low", "update mid", "update high"}));
}

void PackageRepositoryTest::removedAndDeletedSourcesAreForgotten()
{
    QStringList log;
    auto low = std::make_unique<LoggedSource>("low", 0, log);
    LoggedSource high("high", 3, log);
    PackageRepository repository(PackageRepository::PersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    repository.addSource(low.get());
    repository.addSource(&high);
    QTRY_COMPARE(spy.count(), 1);
    repository.removeSource(&high);
    QCOMPARE(high.listeners(), 0);
    QTRY_COMPARE(spy.count(), 2);
    QVERIFY(!packageOf(repository.packageIndex(), "only high"));
    QCOMPARE(packageOf(repository.packageIndex(), "shared")->type(), QString("low"));

    low.reset(); // the last one: then there is an empty index
    QTRY_COMPARE(spy.count(), 3);
    QVERIFY(repository.packageIndex()->installLocation().isValid());
    QVERIFY(!packageOf(repository.packageIndex(), "shared"));
    log.clear();
    repository.persistSources();
    repository.scheduleSourceUpdate();
    QCOMPARE(log, QStringList());
}

void PackageRepositoryTest::heldIndexOutlivesUpdateAndSource()
{
    auto repository = std::make_unique<PackageRepository>(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(repository.get(), &PackageRepository::packageIndexChanged);
    auto source = std::make_unique<MemorySource>();
    source->catalogue.package("p", "type", {{"key", "value"}});
    repository->addSource(source.get());
    QTRY_COMPARE(spy.count(), 1);
    const QSharedPointer<PackageIndex> held = repository->packageIndex();
    repository->removeSource(source.get());
    source.reset();
    QTRY_COMPARE(spy.count(), 2);
    QVERIFY(held != repository->packageIndex());
    repository.reset();
    QCOMPARE(packageOf(held, "p")->manifest(), (QJsonObject{{"key", "value"}}));
    QVERIFY(held->installLocation().directory(false).exists());
}

void PackageRepositoryTest::indexDoesNotDieOnTheGuiThread()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    MemorySource source;
    source.catalogue.package("p");
    const auto gate = holdNextSnapshot(source);
    gate->open.release();
    repository.addSource(&source);
    QTRY_VERIFY(repository.packageIndex());
    PackageList lastHolder =
        PackageIndex::selectPackages(repository.packageIndex(), QString(), {}, {});
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    source.publish();
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(gate->gone.available(), 0);
    lastHolder = PackageList();
    QVERIFY(gate->gone.tryAcquire(1, 60000));
    QVERIFY(gate->goneOn != QThread::currentThread());
}

void PackageRepositoryTest::onlyTheNewestBuildIsSeen()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    MemorySource source;
    source.catalogue.package("old");
    const auto gate = holdNextSnapshot(source);
    repository.addSource(&source);
    QTRY_COMPARE(gate->entered.available(), 1);

    source.catalogue.package("new");
    source.publish();
    // The newer build may have to wait for a thread behind the older one.
    QCoreApplication::processEvents();
    gate->open.release();
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(gate->gone.tryAcquire(1, 60000));
    settle();
    QCOMPARE(spy.count(), 1);
    QVERIFY(packageOf(repository.packageIndex(), "new"));
}

void PackageRepositoryTest::sourcesRefreshAtMostOnceInTwoMinutes()
{
    QStringList log;
    LoggedSource source("a", 3, log);
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    repository.addSource(&source);
    // A source that fails at once may have the references ask for a refresh again.
    source.onUpdate = [&] { repository.scheduleSourceUpdate(); };
    repository.scheduleSourceUpdate();
    repository.scheduleSourceUpdate();
    QCOMPARE(log, QStringList{"update a"});
}

void PackageRepositoryTest::sourceMayLeaveWhileItIsAsked()
{
    QStringList log;
    LoggedSource first("first", 0, log);
    LoggedSource second("second", 1, log);
    auto third = std::make_unique<LoggedSource>("third", 2, log);
    LoggedSource last("last", 3, log);
    auto repository = std::make_unique<PackageRepository>(PackageRepository::DoNotPersistSources);
    for (LoggedSource *source : {&first, &second, third.get(), &last})
        repository->addSource(source);
    first.onUpdate = [&] { repository->removeSource(&first); };
    second.onUpdate = [&] { third.reset(); };
    last.onUpdate = [&] { repository.reset(); };
    repository->scheduleSourceUpdate();
    QVERIFY(!repository);
    QCOMPARE(log, (QStringList{"update first", "update second", "update last"}));
}

void PackageRepositoryTest::mayBeDestroyedDuringABuild()
{
    MemorySource source;
    source.catalogue.package("p");
    const auto gate = holdNextSnapshot(source);
    auto repository = std::make_unique<PackageRepository>(PackageRepository::PersistSources);
    QSignalSpy spy(repository.get(), &PackageRepository::packageIndexChanged);
    repository->addSource(&source);
    QTRY_COMPARE(gate->entered.available(), 1);
    repository.reset();
    gate->open.release();
    settle();
    QCOMPARE(spy.count(), 0);
    QCOMPARE(source.persistCount, 0);
    // Nobody holds the unseen index any more.
    QVERIFY(gate->gone.tryAcquire());
}

void PackageRepositoryTest::indexIsReadFromThreadsDuringUpdates()
{
    PackageRepository repository(PackageRepository::PersistSources);
    MemorySource source;
    for (int i = 0; i < 50; ++i)
        source.catalogue.package(QString::number(i), "type", {{"number", i}});
    repository.addSource(&source);

    QThreadPool readers;
    QVector<QFuture<int>> sums;
    connect(&repository, &PackageRepository::packageIndexChanged, this, [&] {
        for (int reader = 0; reader < 2; ++reader) {
            sums << QtConcurrent::run(&readers, [index = repository.packageIndex()] {
                int sum = 0;
                for (PackageNode const *node : PackageIndex::selectPackages(index, "type", {}, {}))
                    sum += node->manifestValue("number").toInt();
                return sum;
            });
        }
        if (sums.size() < 20)
            source.publish();
    });
    QTRY_COMPARE(sums.size(), 20);
    for (const QFuture<int> &sum : qAsConst(sums))
        QCOMPARE(sum.result(), 49 * 50 / 2);
}

QTEST_GUILESS_MAIN(PackageRepositoryTest)
#include "tst_packagerepository.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "repository/packagerepository.h"
#include "repository/repository.h"
#include "support/scopeddatalocation.h"
#include "testsources.h"

#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

PackageNode *find(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getPackage(QStringRef(&id));
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
    void sourceIsAddedOnce();
    void cycleRunsInOrder_data();
    void cycleRunsInOrder();
    void removedSourceIsForgotten();
    void deletedSourceIsForgotten();
    void withoutSourcesTheIndexIsEmpty();
    void heldIndexOutlivesUpdateAndSource();
    void indexDoesNotDieOnTheGuiThread();
    void onlyTheNewestBuildIsSeen();
    void sourcesRefreshAtMostOnceInTwoMinutes();
    void sourceMayLeaveWhileItIsAsked();
    void mayBeDestroyedDuringABuild();
    void mayBeDestroyedByItsListener();
    void indexIsReadFromThreadsDuringUpdates();
    void repositoryObjectIsAPlainObject();
};

void PackageRepositoryTest::startsEmptyAndIdle()
{
    PackageRepository repository(PackageRepository::PersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    repository.addSource(nullptr);
    repository.removeSource(nullptr);
    MemorySource stranger;
    repository.removeSource(&stranger);
    QCoreApplication::processEvents();
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
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
    }
    for (int i = 0; i < 10; ++i)
        sources[i % 3].publish();
    QCOMPARE(spy.count(), 0);
    QTRY_COMPARE(spy.count(), 1);
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 1);
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(sources[i].log().loads.load(), 1);
        QVERIFY(find(repository.packageIndex(), QString::number(i)));
    }
}

void PackageRepositoryTest::sourceIsAddedOnce()
{
    QStringList log;
    LoggedSource source("a", 3, &log);
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    repository.addSource(&source);
    repository.addSource(&source);
    QCOMPARE(source.listeners(), 1);
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(log, QStringList{"getAccessor a"});
}

void PackageRepositoryTest::cycleRunsInOrder_data()
{
    QTest::addColumn<PackageRepository::SourcePersistencePolicy>("policy");
    QTest::addColumn<QStringList>("persisting");
    QTest::newRow("with persistence") << PackageRepository::PersistSources
                                      << QStringList{"persist low", "persist mid", "persist high"};
    QTest::newRow("without") << PackageRepository::DoNotPersistSources << QStringList();
}

void PackageRepositoryTest::cycleRunsInOrder()
{
    QFETCH(PackageRepository::SourcePersistencePolicy, policy);
    QFETCH(QStringList, persisting);
    QStringList log;
    LoggedSource high("high", 3, &log);
    LoggedSource low("low", 0, &log);
    LoggedSource mid("mid", 2, &log);
    PackageRepository repository(policy);
    connect(&repository, &PackageRepository::packageIndexChanged, this, [&] {
        log << "packageIndexChanged " + find(repository.packageIndex(), "shared")->type();
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

void PackageRepositoryTest::removedSourceIsForgotten()
{
    QStringList log;
    LoggedSource low("low", 0, &log);
    LoggedSource high("high", 3, &log);
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    repository.addSource(&low);
    repository.addSource(&high);
    QTRY_COMPARE(spy.count(), 1);
    repository.removeSource(&high);
    QCOMPARE(high.listeners(), 0);
    QTRY_COMPARE(spy.count(), 2);
    QVERIFY(!find(repository.packageIndex(), "only high"));
    QCOMPARE(find(repository.packageIndex(), "shared")->type(), QString("low"));
}

void PackageRepositoryTest::deletedSourceIsForgotten()
{
    PackageRepository repository(PackageRepository::PersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    auto source = std::make_unique<MemorySource>();
    source->catalogue.package("p");
    repository.addSource(source.get());
    source.reset();
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(!find(repository.packageIndex(), "p"));
    repository.persistSources();
    repository.scheduleSourceUpdate();
}

void PackageRepositoryTest::withoutSourcesTheIndexIsEmpty()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    MemorySource source;
    source.catalogue.package("p");
    repository.addSource(&source);
    QTRY_COMPARE(spy.count(), 1);
    repository.removeSource(&source);
    QTRY_COMPARE(spy.count(), 2);
    QVERIFY(repository.packageIndex());
    QVERIFY(repository.packageIndex()->installLocation().isValid());
    QCOMPARE(PackageIndex::selectPackages(repository.packageIndex(), {}, {}, {}).size(), 0);
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
    QCOMPARE(find(held, "p")->manifest(), (QJsonObject{{"key", "value"}}));
    QVERIFY(held->installLocation().directory(false).exists());
}

void PackageRepositoryTest::indexDoesNotDieOnTheGuiThread()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    SlowSource source;
    source.catalogue.package("p");
    source.gate()->open.release();
    repository.addSource(&source);
    QTRY_VERIFY(repository.packageIndex());
    PackageList lastHolder =
        PackageIndex::selectPackages(repository.packageIndex(), QString(), {}, {});
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    source.publish();
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(source.gate()->gone.available(), 0);
    lastHolder = PackageList();
    QVERIFY(source.gate()->gone.tryAcquire(1, 60000));
    QVERIFY(source.gate()->goneOn != QThread::currentThread());
}

void PackageRepositoryTest::onlyTheNewestBuildIsSeen()
{
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    SlowSource source;
    source.catalogue.package("old");
    repository.addSource(&source);
    QTRY_COMPARE(source.gate()->entered.available(), 1);

    source.catalogue.package("new");
    source.publish();
    // The newer build may have to wait for a thread behind the older one.
    QCoreApplication::processEvents();
    source.gate()->open.release();
    QTRY_COMPARE(spy.count(), 1);
    QVERIFY(source.gate()->gone.tryAcquire(1, 60000));
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 1);
    QVERIFY(find(repository.packageIndex(), "new"));
}

void PackageRepositoryTest::sourcesRefreshAtMostOnceInTwoMinutes()
{
    QStringList log;
    LoggedSource source("a", 3, &log);
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
    LoggedSource first("first", 0, &log);
    LoggedSource second("second", 3, &log);
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    repository.addSource(&first);
    repository.addSource(&second);
    first.onUpdate = [&] { repository.removeSource(&first); };
    repository.scheduleSourceUpdate();
    QCOMPARE(log, (QStringList{"update first", "update second"}));
}

void PackageRepositoryTest::mayBeDestroyedDuringABuild()
{
    SlowSource source;
    source.catalogue.package("p");
    auto repository = std::make_unique<PackageRepository>(PackageRepository::PersistSources);
    QSignalSpy spy(repository.get(), &PackageRepository::packageIndexChanged);
    repository->addSource(&source);
    QTRY_COMPARE(source.gate()->entered.available(), 1);
    repository.reset();
    source.gate()->open.release();
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    QCOMPARE(spy.count(), 0);
    QCOMPARE(source.persistCount, 0);
    // Nobody holds the unseen index any more.
    QVERIFY(source.gate()->gone.tryAcquire());
}

void PackageRepositoryTest::mayBeDestroyedByItsListener()
{
    MemorySource source;
    source.catalogue.package("p");
    auto repository = std::make_unique<PackageRepository>(PackageRepository::DoNotPersistSources);
    repository->packageReference("p");
    connect(repository.get(), &PackageRepository::packageIndexChanged, this, [&repository] {
        repository.reset();
    });
    repository->addSource(&source);
    QTRY_VERIFY(!repository);
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

void PackageRepositoryTest::repositoryObjectIsAPlainObject()
{
    QObject parent;
    QPointer<Repository> repository = new Repository(&parent);
    QCOMPARE(repository->parent(), &parent);
    QCOMPARE(repository->metaObject()->propertyCount(), QObject::staticMetaObject.propertyCount());
    QCOMPARE(repository->metaObject()->methodCount(), QObject::staticMetaObject.methodCount());
}

QTEST_GUILESS_MAIN(PackageRepositoryTest)
#include "tst_packagerepository.moc"

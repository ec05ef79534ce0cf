// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"
#include "references/retrydelay.h"
#include "repository/packagerepository.h"
#include "sources/localpackagesource.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QAbstractEventDispatcher>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;
using namespace std::chrono_literals;

namespace {

constexpr int shortestRetry = 30000; // ms

/// The retries that wait for their time: every single-shot timer of 30 s and more.
QVector<QObject *> armedRetries(QVector<int> *delays = nullptr)
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    QVector<QObject *> result;
    for (QObject *child : dispatcher->children()) {
        for (const auto &timer : dispatcher->registeredTimers(child)) {
            if (timer.interval < shortestRetry)
                continue;
            result << child;
            if (delays)
                *delays << timer.interval;
        }
    }
    return result;
}

/// Lets the time of \a retry come.
void fire(QObject *retry)
{
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(retry);
    QTimerEvent event(timers.first().timerId);
    QCoreApplication::sendEvent(retry, &event);
}

/// A repository of one source in memory, with everything that its references said.
struct Scene
{
    Scene() { repository.addSource(&source); }

    PackageReference *watch(const QString &id)
    {
        PackageReference *reference = repository.packageReference(id);
        const auto note = [this](const QString &line) { log << line; };
        QObject::connect(reference, &PackageReference::statusChanged, [=] {
            note(QMetaEnum::fromType<PackageReference::Status>().valueToKey(reference->status()));
        });
        QObject::connect(
            reference, &PackageReference::typeChanged, [=] { note("type " + reference->type()); });
        QObject::connect(reference, &PackageReference::updated, [=] { note("updated"); });
        return reference;
    }
    /// Publishes the catalogue and waits for its index.
    bool publish()
    {
        QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
        source.publish();
        return spy.wait(60000);
    }

    MemorySource source;
    PackageRepository repository{PackageRepository::DoNotPersistSources};
    QStringList log;
};

/// An installer that fails before anybody can listen to it.
struct HastyInstaller : PackageInstaller
{
    explicit HastyInstaller(const InstallLocation &location)
        : PackageInstaller(location)
    {
        addError(1, "no service");
        finish();
    }
};

class HastySource : public MemorySource
{
public:
    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        return std::make_unique<Accessor>(catalogue, &isHasty);
    }
    bool isHasty = true;

private:
    struct Accessor : MemoryAccessor
    {
        Accessor(const MemoryCatalogue &catalogue, const bool *hasty)
            : MemoryAccessor(catalogue, QSharedPointer<MemoryLog>::create())
            , isHasty(hasty)
        {}
        std::unique_ptr<PackageInstaller> createInstaller(
            int index, const InstallLocation &location) const override
        {
            if (*isHasty)
                return std::make_unique<HastyInstaller>(location);
            return MemoryAccessor::createInstaller(index, location);
        }
        const bool *isHasty;
    };
};

} // namespace

/// The live handle: how it follows indexes, installs, fails and tries again.
class PackageReferenceTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    /// A single-shot timer outlives the object that it was to call.
    void cleanup() { qDeleteAll(armedRetries()); }
    void retryDelayDoubles_data();
    void retryDelayDoubles();
    void oneReferenceForEachIdentifier();
    void unknownPackageIsUnavailableAndRefreshesTheSources();
    void installsAsSoonAsThePackageAppears();
    void everyIndexInstallsAgain();
    void lostPackageBecomesUnavailable();
    void answersFromTheNodeInEveryStatus();
    void failureIsLoggedAndRetriedLater();
    void retryRunsWhileAnotherWorks();
    void delaysGrowUntilSuccess();
    void failureBeforeTheConnection();
    void updateKeepsTheInstallationUntilReady();
    void updateToAReplacedIndexIsDropped();
    void updateOfALostPackage();
    void destroyedDuringAnInstall();
    void destroyedByAListener_data();
    void destroyedByAListener();
    void installsFromDiskWithRequirements();
};

void PackageReferenceTest::retryDelayDoubles_data()
{
    QTest::addColumn<int>("failures");
    QTest::addColumn<qint64>("delay");
    QTest::newRow("first") << 0 << qint64(30000);
    QTest::newRow("second") << 1 << qint64(60000);
    QTest::newRow("third") << 2 << qint64(120000);
    QTest::newRow("fourth") << 3 << qint64(240000);
    QTest::newRow("last that doubles") << 16 << qint64(30000) * 65536;
    QTest::newRow("past the range of a timer") << 17 << qint64(INT_MAX);
    QTest::newRow("years later") << 1000000 << qint64(INT_MAX);
}

void PackageReferenceTest::retryDelayDoubles()
{
    QFETCH(int, failures);
    QFETCH(qint64, delay);
    QCOMPARE(qint64(retryDelay(failures).count()), delay);
}

void PackageReferenceTest::oneReferenceForEachIdentifier()
{
    Scene scene;
    QCOMPARE(scene.repository.packageReference(QString()), nullptr);
    PackageReference *reference = scene.repository.packageReference("p");
    QCOMPARE(reference->id(), QString("p"));
    QCOMPARE(reference->repository(), &scene.repository);
    QCOMPARE(scene.repository.packageReference("p"), reference);
    QVERIFY(scene.repository.packageReference("P") != reference);
    QCOMPARE(scene.repository.findChildren<PackageReference *>().size(), 2);
}

void PackageReferenceTest::unknownPackageIsUnavailableAndRefreshesTheSources()
{
    Scene scene;
    PackageReference *reference = scene.repository.packageReference("missing");
    QCOMPARE(reference->status(), PackageReference::Unavailable);
    QCOMPARE(scene.source.updateCount, 1);
    QVERIFY(scene.publish());
    QCOMPARE(reference->status(), PackageReference::Unavailable);
    QCOMPARE(reference->type(), QString());
    QCOMPARE(reference->manifest(), QJsonObject());
    QVERIFY(reference->manifestField("key").isUndefined());
    QVERIFY(!reference->fileUrl("file").isValid());
    QCOMPARE(reference->node(), nullptr);
    QCOMPARE(reference->packageIndex(), scene.repository.packageIndex());
    QVERIFY(armedRetries().isEmpty());
}

void PackageReferenceTest::installsAsSoonAsThePackageAppears()
{
    Scene scene;
    scene.watch("p");
    QVERIFY(scene.publish());
    scene.source.catalogue.package("p", "a:b");
    QVERIFY(scene.publish());
    QCOMPARE(scene.log, (QStringList{"type a:b", "Installing"}));
    scene.source.installer("p")->succeed();
    QCOMPARE(scene.log, (QStringList{"type a:b", "Installing", "Installed"}));
}

void PackageReferenceTest::everyIndexInstallsAgain()
{
    Scene scene;
    scene.source.catalogue.package("p", "t");
    scene.watch("p");
    QVERIFY(scene.publish());
    const QPointer<MemoryInstaller> first = scene.source.installer("p");
    const QString firstDirectory = first->directory();
    first->succeed();
    QVERIFY(scene.publish());
    QVERIFY(first.isNull());
    QVERIFY(scene.source.installer("p")->directory() != firstDirectory);
    scene.source.installer("p")->succeed();
    QCOMPARE(
        scene.log, (QStringList{"type t", "Installing", "Installed", "Installing", "Installed"}));
}

void PackageReferenceTest::lostPackageBecomesUnavailable()
{
    Scene scene;
    scene.source.catalogue.package("p", "t");
    scene.watch("p");
    QVERIFY(scene.publish());
    const QPointer<MemoryInstaller> installer = scene.source.installer("p");
    installer->succeed();
    scene.log.clear();
    scene.source.catalogue = MemoryCatalogue();
    QVERIFY(scene.publish());
    QCOMPARE(scene.log, (QStringList{"type ", "Unavailable"}));
    QVERIFY(!installer.isNull());
}

void PackageReferenceTest::answersFromTheNodeInEveryStatus()
{
    Scene scene;
    const QJsonObject manifest{{"name", "Chair"}};
    scene.source.catalogue.package("p", "t", manifest);
    PackageReference *reference = scene.watch("p");
    QVERIFY(scene.publish());
    const auto check = [&](PackageReference::Status status) {
        QCOMPARE(reference->status(), status);
        QCOMPARE(reference->type(), QString("t"));
        QCOMPARE(reference->manifest(), manifest);
        QCOMPARE(reference->manifestField("name"), QJsonValue("Chair"));
        QVERIFY(reference->manifestField("other").isUndefined());
        QCOMPARE(reference->fileUrl("f"), QUrl("memory:/p/f"));
    };
    check(PackageReference::Installing);
    QTest::ignoreMessage(QtCriticalMsg, "Package install error 5 \"disk full\"");
    scene.source.installer("p")->fail(5, "disk full");
    check(PackageReference::Incomplete);

    const QString file = reference->node()->installLocation().directory(true).filePath("f");
    writeFile(file, "content");
    QCOMPARE(reference->fileUrl("f"), QUrl::fromLocalFile(file));
    // By QML and by what only knows the meta-object.
    QJsonObject invoked;
    QVERIFY(QMetaObject::invokeMethod(reference, "manifest", Q_RETURN_ARG(QJsonObject, invoked)));
    QCOMPARE(invoked, manifest);
    QCOMPARE(reference->property("status").toInt(), -2);
}

void PackageReferenceTest::failureIsLoggedAndRetriedLater()
{
    Scene scene;
    scene.source.catalogue.package("p").package("q").link("p", Requires, "q");
    scene.watch("p");
    QVERIFY(scene.publish());
    LogRecorder recorder("norvak.packages");
    scene.source.installer("q")->fail(3, "below");
    QCOMPARE(recorder.lines(), QStringList());
    scene.source.installer("p")->fail(2, "above");
    QCOMPARE(
        recorder.lines("critical"),
        (QStringList{"Package install error 2 \"above\"", "Package install error 3 \"below\""}));
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete"}));

    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 1);
    const QSharedPointer<PackageIndex> index = scene.repository.packageIndex();
    fire(retries.first());
    // Silent until the new tree has something to say.
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete"}));
    scene.source.installer("q")->succeed();
    scene.source.installer("p")->succeed();
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete", "Installed"}));
    QCOMPARE(scene.repository.packageIndex(), index);
}

void PackageReferenceTest::retryRunsWhileAnotherWorks()
{
    Scene scene;
    scene.source.catalogue.package("p");
    PackageReference *reference = scene.watch("p");
    LogRecorder quiet("norvak.packages");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(scene.publish());
        scene.source.installer("p")->fail(1, "failed");
    }
    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 2);
    fire(retries.first());
    const QPointer<MemoryInstaller> working = scene.source.installer("p");
    fire(retries.last());
    QVERIFY(!working.isNull());
    QCOMPARE(scene.source.installer("p"), working.data());
    QCOMPARE(reference->status(), PackageReference::Incomplete);
}

void PackageReferenceTest::delaysGrowUntilSuccess()
{
    Scene scene;
    scene.source.catalogue.package("p");
    scene.watch("p");
    QVERIFY(scene.publish());
    LogRecorder quiet("norvak.packages");
    const auto failAndReadDelay = [&] {
        scene.source.installer("p")->fail(1, "failed");
        QVector<int> delays;
        const QVector<QObject *> retries = armedRetries(&delays);
        if (retries.size() == 1)
            fire(retries.first());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return delays;
    };
    // The system rounds timers of this length to whole seconds.
    QCOMPARE(failAndReadDelay(), QVector<int>{30000});
    QCOMPARE(failAndReadDelay(), QVector<int>{60000});
    // A new index doesn't start over.
    QVERIFY(scene.publish());
    QCOMPARE(failAndReadDelay(), QVector<int>{120000});
    scene.source.installer("p")->succeed();
    QVERIFY(scene.publish());
    QCOMPARE(failAndReadDelay(), QVector<int>{30000});
}

void PackageReferenceTest::failureBeforeTheConnection()
{
    HastySource source;
    source.catalogue.package("p");
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    repository.addSource(&source);
    QTRY_VERIFY(repository.packageIndex());
    LogRecorder recorder("norvak.packages");
    PackageReference *reference = repository.packageReference("p");
    QCOMPARE(reference->status(), PackageReference::Incomplete);
    QCOMPARE(recorder.lines().size(), 1);
    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 1);
    // The next failure comes before anybody could hear of it: nothing more until the next index.
    fire(retries.first());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(reference->status(), PackageReference::Incomplete);
    QVERIFY(armedRetries().isEmpty());
    source.isHasty = false;
    source.publish();
    QTRY_COMPARE(reference->status(), PackageReference::Installing);
}

// An update is asked for by name, before the new index reaches the reference by itself.
static void updateAtNextIndex(Scene &scene)
{
    QObject::connect(&scene.repository, &PackageRepository::packageIndexChanged, [&] {
        QMetaObject::invokeMethod(scene.repository.packageReference("p"), "update");
    });
}

void PackageReferenceTest::updateKeepsTheInstallationUntilReady()
{
    Scene scene;
    updateAtNextIndex(scene);
    scene.source.catalogue.package("p", "one");
    PackageReference *reference = scene.watch("p");
    QVERIFY(scene.publish());
    scene.source.installer("p")->succeed();
    scene.log.clear();

    scene.source.catalogue = MemoryCatalogue().package("p", "two");
    scene.source.log().installers.clear();
    QVERIFY(scene.publish());
    // The update was prepared first, then the new index led to an install of its own.
    QCOMPARE(scene.source.log().installers.size(), 2);
    const QPointer<MemoryInstaller> pending = scene.source.log().installers.at(0);
    const QPointer<MemoryInstaller> installing = scene.source.log().installers.at(1);
    QCOMPARE(scene.log, (QStringList{"type two", "Installing"}));
    pending->succeed();
    QCOMPARE(scene.log, (QStringList{"type two", "Installing", "Installed", "updated"}));
    QVERIFY(installing.isNull());
    QVERIFY(!pending.isNull());
    QCOMPARE(reference->packageIndex(), scene.repository.packageIndex());
}

void PackageReferenceTest::updateToAReplacedIndexIsDropped()
{
    Scene scene;
    updateAtNextIndex(scene);
    scene.source.catalogue.package("p", "one");
    PackageReference *reference = scene.watch("p");
    QVERIFY(scene.publish());
    scene.source.installer("p")->succeed();
    scene.source.log().installers.clear();
    QVERIFY(scene.publish());
    const QPointer<MemoryInstaller> pending = scene.source.log().installers.at(0);
    QVERIFY(scene.publish());
    QVERIFY(pending.isNull());
    scene.source.installer("p")->succeed();
    QCOMPARE(reference->status(), PackageReference::Installed);
    QCOMPARE(reference->packageIndex(), scene.repository.packageIndex());
}

void PackageReferenceTest::updateOfALostPackage()
{
    Scene scene;
    updateAtNextIndex(scene);
    scene.source.catalogue.package("p", "one");
    PackageReference *reference = scene.watch("p");
    QVERIFY(scene.publish());
    scene.source.installer("p")->succeed();
    scene.log.clear();
    scene.source.catalogue = MemoryCatalogue();
    QVERIFY(scene.publish());
    QCOMPARE(scene.log, (QStringList{"Unavailable", "type "}));
    QCOMPARE(reference->node(), nullptr);
}

void PackageReferenceTest::destroyedDuringAnInstall()
{
    QPointer<MemoryInstaller> installer;
    {
        Scene scene;
        scene.source.catalogue.package("p").package("q").link("p", Requires, "q");
        scene.watch("p");
        QVERIFY(scene.publish());
        LogRecorder quiet("norvak.packages");
        scene.source.installer("q")->fail(1, "failed");
        scene.source.installer("p")->fail(1, "failed");
        QVERIFY(scene.publish());
        installer = scene.source.installer("q");
        QVERIFY(!installer.isNull());
        QCOMPARE(armedRetries().size(), 1);
    }
    QVERIFY(installer.isNull());
    // What still waits has nobody to call.
    for (QObject *retry : armedRetries())
        fire(retry);
}

void PackageReferenceTest::destroyedByAListener_data()
{
    QTest::addColumn<QByteArray>("signal");
    QTest::newRow("type") << QByteArray(SIGNAL(typeChanged()));
    QTest::newRow("status") << QByteArray(SIGNAL(statusChanged()));
    QTest::newRow("updated") << QByteArray(SIGNAL(updated()));
}

void PackageReferenceTest::destroyedByAListener()
{
    QFETCH(QByteArray, signal);
    MemorySource source;
    auto repository = std::make_unique<PackageRepository>(PackageRepository::DoNotPersistSources);
    repository->addSource(&source);
    connect(repository.get(), &PackageRepository::packageIndexChanged, this, [&repository] {
        QMetaObject::invokeMethod(repository->packageReference("p"), "update");
    });
    PackageReference *reference = repository->packageReference("p");
    QSignalSpy spy(reference, signal.constData());
    const auto destroy = [&repository] { repository.reset(); };
    if (signal == SIGNAL(typeChanged()))
        connect(reference, &PackageReference::typeChanged, this, destroy);
    else if (signal == SIGNAL(updated()))
        connect(reference, &PackageReference::updated, this, destroy);
    else
        connect(reference, &PackageReference::statusChanged, this, destroy);

    for (int i = 0; repository && i < 10; ++i) {
        source.catalogue = MemoryCatalogue().package("p", QString::number(i));
        source.log().installers.clear();
        source.publish();
        const auto isAlive = [](const auto &installer) { return !installer.isNull(); };
        const auto &installers = source.log().installers;
        QTRY_VERIFY(!repository || std::any_of(installers.begin(), installers.end(), isAlive));
        if (repository)
            (*std::find_if(installers.begin(), installers.end(), isAlive))->succeed();
    }
    QVERIFY(!repository);
    QCOMPARE(spy.count(), 1);
}

void PackageReferenceTest::installsFromDiskWithRequirements()
{
    QTemporaryDir tree;
    writeFile(tree.filePath("packages/furniture/chair/manifest.json"), "{}");
    writeFile(tree.filePath("packages/furniture/chair/chair.obj"), "chair mesh");
    writeFile(tree.filePath("packages/material/wood/oak/manifest.json"), "{}");
    writeFile(tree.filePath("packages/material/wood/oak/oak.png"), "oak");
    writeFile(
        tree.filePath("links/chair-oak.json"),
        R"({"type": "requires", "from": "chair", "to": "oak"})");
    LocalPackageSource source(tree.path());
    PackageRepository repository(PackageRepository::PersistSources);
    repository.addSource(&source);
    PackageReference *chair = repository.packageReference("chair");
    QTRY_COMPARE(chair->status(), PackageReference::Installed);
    QCOMPARE(chair->type(), QString("furniture"));

    const QString root = repository.packageIndex()->installLocation().directory(false).path();
    QCOMPARE(readFile(root + "/furniture/chair/chair.obj"), QByteArray("chair mesh"));
    QCOMPARE(readFile(root + "/material/wood/oak/oak.png"), QByteArray("oak"));
    QCOMPARE(chair->fileUrl("chair.obj"), QUrl::fromLocalFile(root + "/furniture/chair/chair.obj"));
    QCOMPARE(
        chair->fileUrl("other"),
        QUrl::fromLocalFile(tree.filePath("packages/furniture/chair/other")));
}

QTEST_GUILESS_MAIN(PackageReferenceTest)
#include "tst_packagereference.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "referencescene.h"
#include "sources/localpackagesource.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// The live handle: how it follows indexes, answers, installs and ends.
class PackageReferenceTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    void oneReferenceForEachIdentifier();
    void unknownPackageIsUnavailableAndRefreshesTheSources();
    void installsAsSoonAsThePackageAppears();
    void everyIndexInstallsAgain();
    void lostPackageBecomesUnavailable();
    void answersFromTheNodeInEveryStatus();
    void updateKeepsTheInstallationUntilReady();
    void updateToAReplacedIndexIsDropped();
    void updateOfALostPackage();
    void destroyedByAListener_data();
    void destroyedByAListener();
    void installsFromDiskWithRequirements();
};

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

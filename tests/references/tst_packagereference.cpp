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

namespace {

/// "p" is installed, and is asked by name to update to each new index before that reaches it by
/// itself.
PackageReference *installAndUpdateEarly(Scene &scene)
{
    QObject::connect(scene.repository, &PackageRepository::packageIndexChanged, [&scene] {
        QMetaObject::invokeMethod(scene.repository->packageReference("p"), "update");
    });
    scene.source.catalogue.package("p", "one");
    PackageReference *reference = scene.watch("p");
    scene.publish();
    scene.installer()->succeed();
    scene.log.clear();
    scene.source.log().installers.clear();
    return reference;
}

} // namespace

/// The live handle: how it follows indexes, answers, installs and ends.
class PackageReferenceTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    void oneReferenceForEachIdentifier();
    void unknownPackageIsUnavailableAndRefreshesTheSources();
    void followsThePackageFromIndexToIndex();
    void answersFromTheNodeInEveryStatus();
    void updateKeepsTheInstallationUntilReady();
    void updateToAReplacedIndexIsDropped();
    void updateOfALostPackage();
    void installsFromDiskWithRequirements();
};

void PackageReferenceTest::oneReferenceForEachIdentifier()
{
    Scene scene;
    QCOMPARE(scene.repository->packageReference(QString()), nullptr);
    PackageReference *reference = scene.repository->packageReference("p");
    QCOMPARE(reference->id(), QString("p"));
    QCOMPARE(scene.repository->packageReference("p"), reference);
    QVERIFY(scene.repository->packageReference("P") != reference);
    QCOMPARE(scene.repository->findChildren<PackageReference *>().size(), 2);
}

void PackageReferenceTest::unknownPackageIsUnavailableAndRefreshesTheSources()
{
    Scene scene;
    QVERIFY(scene.publish());
    PackageReference *reference = scene.repository->packageReference("missing");
    QCOMPARE(reference->status(), PackageReference::Unavailable);
    QCOMPARE(scene.source.updateCount, 1);
    QCOMPARE(reference->type(), QString());
    QCOMPARE(reference->manifest(), QJsonObject());
    QVERIFY(reference->manifestField("key").isUndefined());
    QVERIFY(!reference->fileUrl("file").isValid());
    QCOMPARE(reference->node(), nullptr);
    QCOMPARE(reference->packageIndex(), scene.repository->packageIndex());
}

void PackageReferenceTest::followsThePackageFromIndexToIndex()
{
    Scene scene;
    scene.watch("p");
    const auto said = [&scene] { return std::exchange(scene.log, {}); };
    QVERIFY(scene.publish());
    QCOMPARE(said(), QStringList()); // Unavailable, as before
    scene.source.catalogue.package("p", "a:b");
    QVERIFY(scene.publish());
    QCOMPARE(said(), (QStringList{"type a:b", "Installing"}));
    const QPointer<MemoryInstaller> first = scene.installer();
    const QString firstDirectory = first->directory();
    first->succeed();
    QCOMPARE(said(), QStringList{"Installed"});

    QVERIFY(scene.publish()); // every index installs again
    QVERIFY(first.isNull());
    QVERIFY(scene.installer()->directory() != firstDirectory);
    scene.installer()->succeed();
    QCOMPARE(said(), (QStringList{"Installing", "Installed"}));

    const QPointer<MemoryInstaller> second = scene.installer();
    scene.source.catalogue = MemoryCatalogue();
    QVERIFY(scene.publish());
    QCOMPARE(said(), (QStringList{"type ", "Unavailable"}));
    QVERIFY(!second.isNull());
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
    scene.installer()->fail(5, "disk full");
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

void PackageReferenceTest::updateKeepsTheInstallationUntilReady()
{
    Scene scene;
    const PackageReference *reference = installAndUpdateEarly(scene);
    scene.source.catalogue = MemoryCatalogue().package("p", "two");
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
    QCOMPARE(reference->packageIndex(), scene.repository->packageIndex());
}

void PackageReferenceTest::updateToAReplacedIndexIsDropped()
{
    Scene scene;
    const PackageReference *reference = installAndUpdateEarly(scene);
    QVERIFY(scene.publish());
    const QPointer<MemoryInstaller> pending = scene.source.log().installers.at(0);
    QVERIFY(scene.publish());
    QVERIFY(pending.isNull());
    scene.installer()->succeed();
    QCOMPARE(reference->status(), PackageReference::Installed);
    QCOMPARE(reference->packageIndex(), scene.repository->packageIndex());
}

void PackageReferenceTest::updateOfALostPackage()
{
    Scene scene;
    const PackageReference *reference = installAndUpdateEarly(scene);
    scene.source.catalogue = MemoryCatalogue();
    QVERIFY(scene.publish());
    QCOMPARE(scene.log, (QStringList{"Unavailable", "type "}));
    QCOMPARE(reference->node(), nullptr);
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

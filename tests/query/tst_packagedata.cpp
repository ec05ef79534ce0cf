// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/manifestfilefield.h"
#include "query/manifeststringfield.h"
#include "query/packagedata.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// A PackageData with a text field "title", by default "untitled", and a file field "model".
struct Fixture
{
    TestProvider provider;
    PackageData data;
    ManifestStringField title;
    ManifestFileField model;

    Fixture()
    {
        title.setName("title");
        title.setDefaultValue("untitled");
        model.setName("model");
        addFields(data, {&title, &model});
        data.componentComplete();
        provider.source.catalogue.package("p", "t", {{"title", "Oak"}, {"model", "oak.bin"}});
    }
    /// Shows package "p".
    PackageReference *show()
    {
        provider.publish();
        data.setPackageReference(provider.packageReference("p"));
        return data.packageReference();
    }
    QVariant value(const char *key) const { return data.manifest()->value(key); }
};

} // namespace

class TestPackageData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsStatusAndManifest();
    void settingReference();
    void fieldChangesUpdate();
    void fieldsAreTakenUpInTheNextTurn();
    void nullAndDeadFields();
    void referenceDies();

private:
    ScopedDataLocation m_location;
};

void TestPackageData::followsStatusAndManifest()
{
    Fixture f;
    QCOMPARE(f.value("title"), QVariant("untitled"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));
    const PackageReference *reference = f.show();
    QCOMPARE(reference->status(), PackageReference::Installing);
    QCOMPARE(f.value("title"), QVariant("Oak"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));

    f.provider.source.installer("p")->succeed();
    QCOMPARE(reference->status(), PackageReference::Installed);
    QCOMPARE(f.value("model"), QVariant(QUrl("memory:/p/oak.bin")));

    f.provider.source.catalogue.manifests = {{{"title", "Elm"}}};
    QVERIFY(f.provider.publish()); // back through Installing
    QCOMPARE(f.value("title"), QVariant("Elm"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));

    f.provider.source.catalogue = MemoryCatalogue();
    QVERIFY(f.provider.publish());
    QCOMPARE(reference->status(), PackageReference::Unavailable);
    QCOMPARE(f.value("title"), QVariant("untitled"));
}

void TestPackageData::settingReference()
{
    Fixture f;
    QSignalSpy changed(&f.data, &PackageData::packageReferenceChanged);
    PackageReference *reference = f.show();
    f.data.manifest()->insert("title", "changed by hand");
    f.data.setPackageReference(reference); // runs no update
    QCOMPARE(f.value("title"), QVariant("changed by hand"));
    QCOMPARE(changed.count(), 1);
    f.data.setPackageReference(nullptr);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(f.value("title"), QVariant("untitled"));
    f.data.manifest()->insert("title", "changed by hand");
    Q_EMIT reference->updated(); // no longer ours
    Q_EMIT reference->statusChanged();
    QCOMPARE(f.value("title"), QVariant("changed by hand"));
}

void TestPackageData::fieldChangesUpdate()
{
    Fixture f;
    f.title.setDefaultValue("none");
    QCOMPARE(f.value("title"), QVariant("none"));
    f.title.setName("name");
    QCOMPARE(f.value("name"), QVariant("none"));
    QVERIFY(f.data.manifest()->contains("title"));
    QVERIFY(!f.value("title").isValid());

    QVERIFY(f.data.manifest()->setProperty("name", "written")); // as a script does: not kept
    QVERIFY(!f.value("name").isValid());
    QVERIFY(QMetaObject::invokeMethod(&f.data, "update"));
    QCOMPARE(f.value("name"), QVariant("none"));
}

void TestPackageData::fieldsAreTakenUpInTheNextTurn()
{
    Fixture f;
    QSignalSpy listChanged(&f.data, &PackageData::manifestFieldsChanged);
    ManifestStringField late;
    late.setName("late");
    addFields(f.data, {&late});
    QVERIFY(!f.data.manifest()->contains("late"));
    QCoreApplication::processEvents();
    QCOMPARE(f.value("late"), QVariant(QString()));

    auto fields = f.data.manifestFields();
    fields.clear(&fields);
    QCOMPARE(f.value("title"), QVariant("untitled"));
    QCoreApplication::processEvents();
    QStringList keys = f.data.manifest()->keys();
    keys.sort();
    QCOMPARE(keys, (QStringList{"late", "model", "title"})); // a map keeps its keys
    QVERIFY(!f.value("title").isValid());
    QCOMPARE(listChanged.count(), 0);
    f.data.manifest()->insert("title", "changed by hand");
    f.title.setDefaultValue("none"); // no longer ours
    QCOMPARE(f.value("title"), QVariant("changed by hand"));
}

void TestPackageData::nullAndDeadFields()
{
    Fixture f;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("null is no manifest field"));
    {
        ManifestStringField passing;
        passing.setName("passing");
        addFields(f.data, {nullptr, &passing});
        f.data.componentComplete();
        QVERIFY(f.data.manifest()->contains("passing"));
    }
    f.title.setDefaultValue("none"); // any cause of an update
    QCOMPARE(f.value("title"), QVariant("none"));
    QVERIFY(!f.value("passing").isValid());
    auto fields = f.data.manifestFields();
    fields.clear(&fields);
    QCoreApplication::processEvents();
    QVERIFY(!f.value("title").isValid());
}

void TestPackageData::referenceDies()
{
    Fixture f;
    f.show();
    QCOMPARE(f.value("title"), QVariant("Oak"));
    delete f.provider.repository;
    QCOMPARE(f.data.packageReference(), nullptr);
    QSignalSpy changed(&f.data, &PackageData::packageReferenceChanged);
    f.data.setPackageReference(nullptr);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(f.value("title"), QVariant("untitled"));
}

QTEST_GUILESS_MAIN(TestPackageData)
#include "tst_packagedata.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

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
        auto fields = data.manifestFields();
        fields.append(&fields, &title);
        fields.append(&fields, &model);
        data.componentComplete();
        provider.source.catalogue.package("p", "t", {{"title", "Oak"}, {"model", "oak.bin"}});
    }
    QVariant value(const char *key) const { return data.manifest()->value(key); }
};

} // namespace

class TestPackageData : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutReference();
    void followsStatus();
    void followsManifest();
    void settingReference();
    void fieldChangesUpdate();
    void clearedFieldsLeaveKeys();
    void writesAreNotKept();
    void oneMapUnderTwoNames();
    void queuedFieldChange();
    void nullAndDeadFields();
    void referenceDies();

private:
    ScopedDataLocation m_location;
};

void TestPackageData::withoutReference()
{
    Fixture f;
    QCOMPARE(f.value("title"), QVariant("untitled"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));
}

void TestPackageData::followsStatus()
{
    Fixture f;
    QVERIFY(f.provider.publish());
    PackageReference *reference = f.provider.packageReference("p");
    f.data.setPackageReference(reference);
    QCOMPARE(reference->status(), PackageReference::Installing);
    QCOMPARE(f.value("title"), QVariant("Oak"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));

    f.provider.source.installer("p")->succeed();
    QCOMPARE(reference->status(), PackageReference::Installed);
    QCOMPARE(f.value("model"), QVariant(QUrl("memory:/p/oak.bin")));

    f.provider.source.catalogue = MemoryCatalogue();
    QVERIFY(f.provider.publish());
    QCOMPARE(reference->status(), PackageReference::Unavailable);
    QCOMPARE(f.value("title"), QVariant("untitled"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));
}

void TestPackageData::followsManifest()
{
    Fixture f;
    QVERIFY(f.provider.publish());
    PackageReference *reference = f.provider.packageReference("p");
    f.data.setPackageReference(reference);
    f.provider.source.installer("p")->succeed();
    f.provider.source.catalogue.manifests = {{{"title", "Elm"}}};
    QVERIFY(f.provider.publish()); // back through Installing
    QCOMPARE(f.value("title"), QVariant("Elm"));
    QCOMPARE(f.value("model"), QVariant(QUrl()));
}

void TestPackageData::settingReference()
{
    Fixture f;
    QVERIFY(f.provider.publish());
    PackageReference *reference = f.provider.packageReference("p");
    QSignalSpy changed(&f.data, &PackageData::packageReferenceChanged);
    f.data.setPackageReference(reference);
    f.data.manifest()->insert("title", "changed by hand");
    f.data.setPackageReference(reference); // runs no update
    QCOMPARE(f.value("title"), QVariant("changed by hand"));
    QCOMPARE(changed.count(), 1);
    f.data.setPackageReference(nullptr);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(f.value("title"), QVariant("untitled"));
    Q_EMIT reference->updated(); // no longer ours
    f.data.manifest()->insert("title", "changed by hand");
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
}

void TestPackageData::clearedFieldsLeaveKeys()
{
    Fixture f;
    QSignalSpy listChanged(&f.data, &PackageData::manifestFieldsChanged);
    QCoreApplication::processEvents();
    auto fields = f.data.manifestFields();
    fields.clear(&fields);
    QCOMPARE(f.value("title"), QVariant("untitled"));
    QCoreApplication::processEvents();
    QStringList keys = f.data.manifest()->keys();
    keys.sort();
    QCOMPARE(keys, (QStringList{"model", "title"}));
    QVERIFY(!f.value("title").isValid());
    QCOMPARE(listChanged.count(), 0);
    f.data.manifest()->insert("title", "changed by hand");
    f.title.setDefaultValue("none"); // no longer ours
    QCOMPARE(f.value("title"), QVariant("changed by hand"));
}

void TestPackageData::writesAreNotKept()
{
    Fixture f;
    QVERIFY(f.data.manifest()->setProperty("title", "written"));
    QVERIFY(!f.value("title").isValid());
    QVERIFY(QMetaObject::invokeMethod(&f.data, "update"));
    QCOMPARE(f.value("title"), QVariant("untitled"));
}

void TestPackageData::oneMapUnderTwoNames()
{
    Fixture f;
    QCOMPARE(f.data.property("$").value<QQmlPropertyMap *>(), f.data.manifest());
    QCOMPARE(f.data.property("manifest").value<QQmlPropertyMap *>(), f.data.manifest());
}

void TestPackageData::queuedFieldChange()
{
    Fixture f;
    ManifestStringField late;
    late.setName("late");
    auto fields = f.data.manifestFields();
    fields.append(&fields, &late);
    QCOMPARE(fields.count(&fields), 3);
    QCOMPARE(fields.at(&fields, 2), &late);
    QCOMPARE(fields.at(&fields, -1), nullptr);
    QVERIFY(!f.data.manifest()->contains("late"));
    QCoreApplication::processEvents();
    QCOMPARE(f.value("late"), QVariant(QString()));
}

void TestPackageData::nullAndDeadFields()
{
    Fixture f;
    auto fields = f.data.manifestFields();
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("null is no manifest field"));
    fields.append(&fields, nullptr);
    {
        ManifestStringField passing;
        passing.setName("passing");
        fields.append(&fields, &passing);
        f.data.componentComplete();
        QVERIFY(f.data.manifest()->contains("passing"));
    }
    f.title.setDefaultValue("none"); // any cause of an update
    QCOMPARE(f.value("title"), QVariant("none"));
    QVERIFY(!f.value("passing").isValid());
    fields.clear(&fields);
    QCoreApplication::processEvents();
    QVERIFY(!f.value("title").isValid());
}

void TestPackageData::referenceDies()
{
    Fixture f;
    QVERIFY(f.provider.publish());
    f.data.setPackageReference(f.provider.packageReference("p"));
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

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereference.h"
#include "references/packagereferencefield.h"
#include "references/packagereferencetype.h"
#include "repository/ipackageprovider.h"
#include "support/columns.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QtTest>
#include <norvakdataabstraction/context.h>
#include <norvakdataabstraction/linkeddocument.h>

using namespace nk::pm;
using namespace nk::pm::test;
using nk::data::Context;
using nk::data::LinkedDocument;

namespace {

/// The application's context of its documents, with a repository behind it.
class PackageContext : public Context, public IPackageProvider
{
    Q_OBJECT
    Q_INTERFACES(nk::pm::IPackageProvider)

public:
    PackageRepository *packageRepository() override { return provider.repository; }
    PackageReference *packageReference(const QString &id) override
    {
        asked += id;
        return provider.packageReference(id);
    }

    TestProvider provider;
    QStringList asked;
};

} // namespace

class TestPackageReferenceField : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void roundTripThroughAFile();
    void attachingInstalls();
    void nullRemovesTheValue_data();
    void nullRemovesTheValue();
    void documentWithoutProvider();
    void valuesThatLeadNowhere();
    void identifiersOutsideLatin1();
    void withoutDocument();
    void compare();
    void convert_data();
    void convert();
    void acceptedTypes();

private:
    PackageReference *reference(const QString &id) { return m_context->packageReference(id); }
    /// The entry's package. What the field reads is always of this type, also where it is null.
    PackageReference *read(LinkedDocument &document)
    {
        const QVariant value = m_field->read(&document, "entry");
        if (value.userType() != qMetaTypeId<PackageReference *>())
            qFatal("The field has read a %s", value.typeName());
        return value.value<PackageReference *>();
    }

    QScopedPointer<ScopedDataLocation> m_location;
    QScopedPointer<PackageContext> m_context;
    QScopedPointer<PackageReferenceField> m_field;
};

void TestPackageReferenceField::initTestCase()
{
    LinkedDocument::registerReferenceType<PackageReferenceType, PackageReference>();
}

void TestPackageReferenceField::init()
{
    m_location.reset(new ScopedDataLocation);
    m_context.reset(new PackageContext);
    m_context->provider.source.catalogue.package("lamp", "model").package("desk", "model");
    QVERIFY(m_context->provider.publish());
    m_field.reset(new PackageReferenceField);
    m_field->setName("package");
}

void TestPackageReferenceField::cleanup()
{
    m_field.reset();
    m_context.reset();
    m_location.reset();
}

void TestPackageReferenceField::roundTripThroughAFile()
{
    const QString path = m_location->filePath("collection.json");
    LinkedDocument document(m_context.data());
    m_field->write(&document, "entry", QVariant::fromValue(reference("lamp")));
    m_field->write(&document, "other", QVariant::fromValue<QObject *>(reference("desk")));
    QCOMPARE(document.getStructValue("entry", "package"), QJsonValue("ref:1:lamp"));
    QVERIFY(document.save(path));

    // Another start of the application.
    m_context.reset(new PackageContext);
    LinkedDocument loaded(m_context.data());
    QVERIFY(loaded.load(path));
    QCOMPARE(loaded.structKeys(), (QStringList{"entry", "other"}));
    QCOMPARE(m_context->asked, QStringList());
    QCOMPARE(read(loaded), reference("lamp"));
    QCOMPARE(read(loaded)->id(), QString("lamp"));
    QCOMPARE(m_field->read(&loaded, "other").value<PackageReference *>(), reference("desk"));
}

void TestPackageReferenceField::attachingInstalls()
{
    LinkedDocument document(m_context.data());
    document.setStructValue("entry", "package", "ref:1:lamp");
    QVERIFY(!m_context->provider.source.installer("lamp"));
    document.attachReferences();
    QVERIFY(m_context->provider.source.installer("lamp"));
    QCOMPARE(m_context->asked, QStringList{"lamp"});
    QCOMPARE(reference("lamp")->status(), PackageReference::Installing);
}

void TestPackageReferenceField::nullRemovesTheValue_data()
{
    Columns<QVariant>("value")
        .row("null reference", QVariant::fromValue<PackageReference *>(nullptr))
        .row("null object", QVariant::fromValue<QObject *>(nullptr))
        .row("other object", QVariant::fromValue<QObject *>(this))
        .row("text", "ref:1:lamp")
        .row("nothing", {});
}

void TestPackageReferenceField::nullRemovesTheValue()
{
    QFETCH(QVariant, value);
    LinkedDocument document(m_context.data());
    m_field->write(&document, "entry", QVariant::fromValue(reference("lamp")));
    m_field->write(&document, "entry", value);
    QVERIFY(document.getStructValue("entry", "package").isUndefined());
    QCOMPARE(read(document), nullptr);
}

void TestPackageReferenceField::documentWithoutProvider()
{
    Context noProvider;
    for (Context *context : {static_cast<Context *>(nullptr), &noProvider}) {
        LinkedDocument document(context);
        m_field->write(&document, "entry", QVariant::fromValue(reference("lamp")));
        QCOMPARE(document.getStructValue("entry", "package"), QJsonValue("ref:1:lamp"));
        QCOMPARE(read(document), nullptr);
        QCOMPARE(PackageReferenceType::getReference(&document, "lamp"), nullptr);
        document.attachReferences();

        document.setContext(m_context.data());
        QCOMPARE(read(document), reference("lamp"));
    }
}

void TestPackageReferenceField::valuesThatLeadNowhere()
{
    const QList<QJsonValue> values{
        "lamp", "ref:2:lamp", "ref:1:", 1, QJsonObject{{"ref", "lamp"}}, QJsonValue::Undefined};
    LinkedDocument document(m_context.data());
    for (const QJsonValue &value : values) {
        document.setStructValue("entry", "package", value);
        QCOMPARE(read(document), nullptr);
    }
}

void TestPackageReferenceField::identifiersOutsideLatin1()
{
    LinkedDocument document(m_context.data());
    const QString latin = QString::fromUtf8("l\u00e4mp");
    m_field->write(&document, "entry", QVariant::fromValue(reference(latin)));
    QCOMPARE(read(document), reference(latin));

    const QString other = QString::fromUtf8("\u6f22lamp");
    QCOMPARE(PackageReferenceType::identifier(reference(other)), QByteArray("?lamp"));
    m_field->write(&document, "entry", QVariant::fromValue(reference(other)));
    QCOMPARE(read(document), reference("?lamp"));
}

void TestPackageReferenceField::withoutDocument()
{
    const QVariant value = m_field->read(nullptr, "entry");
    QCOMPARE(value.userType(), qMetaTypeId<LinkedDocument *>());
    QCOMPARE(value.value<LinkedDocument *>(), nullptr);
    m_field->write(nullptr, "entry", QVariant::fromValue(reference("lamp")));
}

void TestPackageReferenceField::compare()
{
    PackageReference *lamp = reference("lamp");
    const QVariant asReference = QVariant::fromValue(lamp);
    QVERIFY(m_field->compare(asReference, asReference));
    QVERIFY(m_field->compare(asReference, QVariant::fromValue<QObject *>(lamp)));
    QVERIFY(!m_field->compare(asReference, QVariant::fromValue(reference("desk"))));
    QVERIFY(!m_field->compare(asReference, QVariant()));
    QVERIFY(m_field->compare(QVariant(), QVariant::fromValue<PackageReference *>(nullptr)));
    QVERIFY(m_field->compare(QVariant("a"), QVariant("b"))); // neither is an object
}

void TestPackageReferenceField::convert_data()
{
    Columns<QVariant, bool>("value", "isReference")
        .row("null reference", QVariant::fromValue<PackageReference *>(nullptr), true)
        .row("null object", QVariant::fromValue<QObject *>(nullptr), true)
        .row("other object", QVariant::fromValue<QObject *>(this), true)
        .row("other class", QVariant::fromValue<Context *>(nullptr), true)
        .row("text", "lamp", false)
        .row("number", 1, false)
        .row("nothing", {}, false);
}

void TestPackageReferenceField::convert()
{
    QFETCH(QVariant, value);
    QFETCH(bool, isReference);
    const QVariant converted = m_field->convert(value);
    QVERIFY(converted.isValid());
    QCOMPARE(
        converted.userType(),
        isReference ? qMetaTypeId<PackageReference *>() : qMetaTypeId<LinkedDocument *>());
    QCOMPARE(converted.value<QObject *>(), nullptr);

    PackageReference *lamp = reference("lamp");
    for (const QVariant &same : {QVariant::fromValue(lamp), QVariant::fromValue<QObject *>(lamp)}) {
        QCOMPARE(m_field->convert(same).userType(), qMetaTypeId<PackageReference *>());
        QCOMPARE(m_field->convert(same).value<PackageReference *>(), lamp);
    }
}

void TestPackageReferenceField::acceptedTypes()
{
    QSignalSpy spy(m_field.data(), &PackageReferenceField::acceptedTypesChanged);
    QVERIFY(m_field->setProperty("acceptedTypes", QStringList{"picture"}));
    m_field->setAcceptedTypes({"picture"});
    QCOMPARE(m_field->property("acceptedTypes").toStringList(), QStringList{"picture"});
    QCOMPARE(spy.count(), 1);

    LinkedDocument document(m_context.data());
    const QVariant lamp = QVariant::fromValue(reference("lamp")); // of type "model"
    m_field->write(&document, "entry", lamp);
    QCOMPARE(read(document), reference("lamp"));
    QCOMPARE(m_field->convert(lamp).value<PackageReference *>(), reference("lamp"));
}

QTEST_GUILESS_MAIN(TestPackageReferenceField)
#include "tst_packagereferencefield.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <norvakdataabstraction/datafield.h>

#include <QJsonArray>
#include <QSignalSpy>
#include <QtTest>

using namespace nk::data;

class TestDataField : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void name();
    void values_data();
    void values();
    void withoutDocument();
};

void TestDataField::name()
{
    DataField field;
    QSignalSpy spy(&field, &DataField::nameChanged);
    QVERIFY(field.setProperty("name", "title"));
    field.setName("title");
    QCOMPARE(field.name(), QString("title"));
    QCOMPARE(spy.count(), 1);
}

void TestDataField::values_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<QVariant>("read");
    QTest::newRow("text") << QVariant("x") << QJsonValue("x") << QVariant("x");
    QTest::newRow("list") << QVariant(QStringList{"a", "b"}) << QJsonValue(QJsonArray{"a", "b"})
                          << QVariant(QVariantList{"a", "b"});
    QTest::newRow("none removes") << QVariant() << QJsonValue(QJsonValue::Undefined) << QVariant();
}

void TestDataField::values()
{
    QFETCH(QVariant, value);
    QFETCH(QVariant, read);
    LinkedDocument document;
    DataField field;
    field.setName("title");
    document.setStructValue("key", "title", "before");
    document.setStructValue("key", "size", 3);
    field.write(&document, "key", value);
    QTEST(document.getStructValue("key", "title"), "stored");
    QCOMPARE(document.getStructValue("key", "size"), QJsonValue(3));
    QCOMPARE(field.read(&document, "key"), read);
    QCOMPARE(field.convert(value), read);
    QVERIFY(field.compare(value, read));
    QVERIFY(!field.compare(value, QVariant("something else")));
}

void TestDataField::withoutDocument()
{
    DataField field;
    field.write(nullptr, "a", 1);
    QVERIFY(!field.read(nullptr, "a").isValid());
}

QTEST_GUILESS_MAIN(TestDataField)
#include "tst_datafield.moc"

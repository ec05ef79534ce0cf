// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/manifestbooleanfield.h"
#include "query/manifestfilefield.h"
#include "query/manifestsizefield.h"
#include "query/manifeststringfield.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QJsonArray>
#include <QTranslator>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// Knows one translation id.
class OneTranslation : public QTranslator
{
public:
    QString translate(const char *, const char *source, const char *, int) const override
    {
        return qstrcmp(source, "title.oak") == 0 ? QStringLiteral("Eiche") : QString();
    }
    bool isEmpty() const override { return false; }
};

} // namespace

class TestManifestFields : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void plainField();
    void stringField_data();
    void stringField();
    void booleanField_data();
    void booleanField();
    void sizeField_data();
    void sizeField();
    void fileField_data();
    void fileField();
    void setterSignals();
    void smallChangesOfSize();

private:
    /// What \a field reads under the key \a key.
    QVariant read(ManifestField &field, const QString &key)
    {
        field.setName(key);
        return field.read(m_node);
    }

    ScopedDataLocation m_location;
    QSharedPointer<PackageIndex> m_index;
    PackageNode *m_node = nullptr;
};

void TestManifestFields::initTestCase()
{
    const QJsonObject manifest{
        {"text", "Oak"},
        {"empty", ""},
        {"translated", "id:title.oak"},
        {"untranslated", "id:title.elm"},
        {"capital", "Id:title.oak"},
        {"number", 1},
        {"true", true},
        {"false", false},
        {"null", QJsonValue::Null},
        {"size", QJsonArray{3.5, 4}},
        {"negative", QJsonArray{-1, 5}},
        {"long", QJsonArray{1, 2, 3}},
        {"short", QJsonArray{1}},
        {"mixed", QJsonArray{"1", 2}},
        {"file", "model.bin"}};
    const QString id = "p";
    m_index = buildIndex(MemoryCatalogue().package(id, "t", manifest));
    m_node = m_index->getPackage(QStringRef(&id));
    QVERIFY(m_node);
}

void TestManifestFields::plainField()
{
    ManifestField field;
    QCOMPARE(read(field, "size"), QVariant(QJsonValue(QJsonArray{3.5, 4})));
    const QVariant missing = read(field, "missing");
    QCOMPARE(missing.userType(), int(QMetaType::QJsonValue));
    QVERIFY(missing.toJsonValue().isUndefined());
    QVERIFY(field.read(nullptr).toJsonValue().isUndefined());
    QVERIFY(!field.isStatusDependent());
}

void TestManifestFields::stringField_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("expected");

    QTest::newRow("text") << "text"
                          << "Oak";
    QTest::newRow("an empty text is no missing one") << "empty"
                                                     << "";
    QTest::newRow("missing") << "missing"
                             << "id:title.oak";
    QTest::newRow("number") << "number"
                            << "id:title.oak";
    QTest::newRow("null") << "null"
                          << "id:title.oak";
    QTest::newRow("translated") << "translated"
                                << "Eiche";
    QTest::newRow("without a translation") << "untranslated"
                                           << "title.elm";
    QTest::newRow("capital") << "capital"
                             << "Id:title.oak";
}

void TestManifestFields::stringField()
{
    OneTranslation translation;
    QCoreApplication::installTranslator(&translation);
    ManifestStringField field;
    field.setDefaultValue("id:title.oak"); // given as it stands
    QFETCH(QString, key);
    QFETCH(QString, expected);
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant("id:title.oak"));
    QCoreApplication::removeTranslator(&translation);
}

void TestManifestFields::booleanField_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("byDefault");
    QTest::addColumn<bool>("expected");

    QTest::newRow("true") << "true" << false << true;
    QTest::newRow("false") << "false" << true << false;
    QTest::newRow("a number is none") << "number" << false << false;
    QTest::newRow("a text is none") << "text" << true << true;
    QTest::newRow("missing") << "missing" << true << true;
}

void TestManifestFields::booleanField()
{
    QFETCH(QString, key);
    QFETCH(bool, byDefault);
    QFETCH(bool, expected);
    ManifestBooleanField field;
    field.setDefaultValue(byDefault);
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant(byDefault));
}

void TestManifestFields::sizeField_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QSizeF>("expected");

    QTest::newRow("size") << "size" << QSizeF(3.5, 4);
    QTest::newRow("negative counts as 0") << "negative" << QSizeF(0, 5);
    QTest::newRow("too long") << "long" << QSizeF(1, 2);
    QTest::newRow("too short") << "short" << QSizeF(7, 8);
    QTest::newRow("not all numbers") << "mixed" << QSizeF(7, 8);
    QTest::newRow("no array") << "number" << QSizeF(7, 8);
    QTest::newRow("missing") << "missing" << QSizeF(7, 8);
}

void TestManifestFields::sizeField()
{
    QFETCH(QString, key);
    QFETCH(QSizeF, expected);
    ManifestSizeField field;
    QCOMPARE(field.defaultValue(), QSizeF(0, 0));
    field.setDefaultValue({7, 8});
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant(QSizeF(7, 8)));
}

void TestManifestFields::fileField_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QUrl>("expected");

    QTest::newRow("file") << "file" << QUrl("memory:/p/model.bin");
    QTest::newRow("no text") << "number" << QUrl();
    QTest::newRow("missing") << "missing" << QUrl();
}

void TestManifestFields::fileField()
{
    QFETCH(QString, key);
    QFETCH(QUrl, expected);
    ManifestFileField field;
    QVERIFY(field.isStatusDependent());
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant(QUrl()));
}

void TestManifestFields::setterSignals()
{
    ManifestStringField text;
    ManifestBooleanField flag;
    ManifestSizeField size;
    const QList<QPair<ManifestField *, QVariant>> defaults{
        {&text, "a"}, {&flag, !flag.defaultValue()}, {&size, QSizeF(1, 1)}};
    for (const auto &[field, value] : defaults) {
        QStringList log;
        const auto own =
            field->metaObject()->property(field->metaObject()->indexOfProperty("defaultValue"));
        QSignalSpy changed(field, QByteArray("2").append(own.notifySignal().methodSignature()));
        QSignalSpy named(field, &ManifestField::nameChanged);
        connect(field, &ManifestField::updateRequested, this, [&] {
            log.append(QString("update after %1 %2").arg(named.count()).arg(changed.count()));
        });
        field->setName("key");
        field->setName("key");
        QVERIFY(own.write(field, value));
        QVERIFY(own.write(field, value));
        QCOMPARE(log, (QStringList{"update after 1 0", "update after 1 1"}));
        field->disconnect(this);
    }
}

void TestManifestFields::smallChangesOfSize()
{
    ManifestSizeField field;
    field.setDefaultValue({100, 100});
    QSignalSpy changed(&field, &ManifestSizeField::defaultValueChanged);
    field.setDefaultValue({100 + 1e-11, 100});
    QCOMPARE(changed.count(), 0);
    field.setDefaultValue({100, 100.001});
    QCOMPARE(changed.count(), 1);
}

QTEST_GUILESS_MAIN(TestManifestFields)
#include "tst_manifestfields.moc"

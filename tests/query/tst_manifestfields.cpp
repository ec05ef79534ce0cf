// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/manifestbooleanfield.h"
#include "query/manifestfilefield.h"
#include "query/manifestsizefield.h"
#include "query/manifeststringfield.h"
#include "support/columns.h"
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
    m_index = buildIndex(MemoryCatalogue().package("p", "t", manifest));
    m_node = packageOf(m_index, "p");
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
    Columns<QString, QString>("key", "expected")
        .row("text", "text", "Oak")
        .row("an empty text is no missing one", "empty", "")
        .row("missing", "missing", "id:title.oak")
        .row("number", "number", "id:title.oak")
        .row("null", "null", "id:title.oak")
        .row("translated", "translated", "Eiche")
        .row("without a translation", "untranslated", "title.elm")
        .row("capital", "capital", "Id:title.oak");
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
    Columns<QString, bool, bool>("key", "byDefault", "expected")
        .row("true", "true", false, true)
        .row("false", "false", true, false)
        .row("a number is none", "number", false, false)
        .row("a text is none", "text", true, true)
        .row("missing", "missing", true, true);
}

void TestManifestFields::booleanField()
{
    QFETCH(QString, key);
    QFETCH(bool, byDefault);
    ManifestBooleanField field;
    field.setDefaultValue(byDefault);
    QFETCH(bool, expected);
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant(byDefault));
}

void TestManifestFields::sizeField_data()
{
    Columns<QString, QSizeF>("key", "expected")
        .row("size", "size", {3.5, 4})
        .row("negative counts as 0", "negative", {0, 5})
        .row("too long", "long", {1, 2})
        .row("too short", "short", {7, 8})
        .row("not all numbers", "mixed", {7, 8})
        .row("no array", "number", {7, 8})
        .row("missing", "missing", {7, 8});
}

void TestManifestFields::sizeField()
{
    QFETCH(QString, key);
    ManifestSizeField field;
    QCOMPARE(field.defaultValue(), QSizeF(0, 0));
    field.setDefaultValue({7, 8});
    QFETCH(QSizeF, expected);
    QCOMPARE(read(field, key), QVariant(expected));
    QCOMPARE(field.read(nullptr), QVariant(QSizeF(7, 8)));
}

void TestManifestFields::fileField_data()
{
    Columns<QString, QUrl>("key", "expected")
        .row("file", "file", QUrl("memory:/p/model.bin"))
        .row("no text", "number", {})
        .row("missing", "missing", {});
}

void TestManifestFields::fileField()
{
    QFETCH(QString, key);
    ManifestFileField field;
    QVERIFY(field.isStatusDependent());
    QFETCH(QUrl, expected);
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

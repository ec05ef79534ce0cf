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

using MakeField = ManifestField *(*)();

ManifestField *plainField()
{
    return new ManifestField;
}

ManifestField *textField()
{
    auto *field = new ManifestStringField;
    field->setDefaultValue("id:title.oak");
    return field;
}

template<bool byDefault>
ManifestField *flagField()
{
    auto *field = new ManifestBooleanField;
    field->setDefaultValue(byDefault);
    return field;
}

ManifestField *sizeField()
{
    auto *field = new ManifestSizeField;
    field->setDefaultValue({7, 8});
    return field;
}

ManifestField *fileField()
{
    return new ManifestFileField;
}

} // namespace

Q_DECLARE_METATYPE(MakeField)

class TestManifestFields : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void read_data();
    void read();
    void dependsOnTheStatusOnlyForFiles();
    void setterSignals();
    void smallChangesOfSize();

private:
    ScopedDataLocation m_location;
};

void TestManifestFields::read_data()
{
    const QSizeF size(7, 8);
    const QString text = "id:title.oak"; // given as it stands
    const QJsonValue undefined(QJsonValue::Undefined);
    Columns<MakeField, QJsonValue, QVariant>("makeField", "value", "expected")
        .row("any: as it is", plainField, QJsonArray{3.5, 4}, QJsonValue(QJsonArray{3.5, 4}))
        .row("any: missing", plainField, undefined, undefined)
        .row("text", textField, "Oak", "Oak")
        .row("text: an empty one is no missing one", textField, "", "")
        .row("text: missing", textField, undefined, text)
        .row("text: number", textField, 1, text)
        .row("text: null", textField, QJsonValue::Null, text)
        .row("text: translated", textField, "id:title.oak", "Eiche")
        .row("text: without a translation", textField, "id:title.elm", "title.elm")
        .row("text: capital", textField, "Id:title.oak", "Id:title.oak")
        .row("flag: true, by default false", flagField<false>, true, true)
        .row("flag: false, by default true", flagField<true>, false, false)
        .row("flag: a number is none", flagField<false>, 1, false)
        .row("flag: a text is none", flagField<true>, "", true)
        .row("flag: missing", flagField<true>, undefined, true)
        .row("size", sizeField, QJsonArray{3.5, 4}, QSizeF(3.5, 4))
        .row("size: negative counts as 0", sizeField, QJsonArray{-1, 5}, QSizeF(0, 5))
        .row("size: too long", sizeField, QJsonArray{1, 2, 3}, QSizeF(1, 2))
        .row("size: too short", sizeField, QJsonArray{1}, size)
        .row("size: not all numbers", sizeField, QJsonArray{"1", 2}, size)
        .row("size: no array", sizeField, 1, size)
        .row("size: missing", sizeField, undefined, size)
        .row("file", fileField, "model.bin", QUrl("memory:/p/model.bin"))
        .row("file: no text", fileField, 1, QUrl())
        .row("file: missing", fileField, undefined, QUrl());
}

void TestManifestFields::read()
{
    QFETCH(MakeField, makeField);
    QFETCH(QJsonValue, value);
    QFETCH(QVariant, expected);
    OneTranslation translation;
    QCoreApplication::installTranslator(&translation);
    const auto index = buildIndex(MemoryCatalogue().package("p", "t", {{"key", value}}));
    const std::unique_ptr<ManifestField> field(makeField());
    field->setName("key");
    QCOMPARE(field->read(packageOf(index, "p")), expected);
    QCOMPARE(field->read(packageOf(index, "p")).userType(), expected.userType());
    field->setName("missing");
    QCOMPARE(field->read(nullptr), field->read(packageOf(index, "p")));
    QCoreApplication::removeTranslator(&translation);
}

void TestManifestFields::dependsOnTheStatusOnlyForFiles()
{
    QVERIFY(ManifestFileField().isStatusDependent());
    QVERIFY(!ManifestStringField().isStatusDependent());
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

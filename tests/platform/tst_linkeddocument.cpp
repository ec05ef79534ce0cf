// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <norvakdataabstraction/datafield.h>
#include <norvakdataabstraction/linkeddocument.h>

#include "support/filesizelimit.h"
#include "support/testfiles.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::data;
using nk::pm::test::FileSizeLimit;
using nk::pm::test::readFile;
using nk::pm::test::writeFile;

namespace {

class Lamp : public QObject
{
    Q_OBJECT

public:
    Lamp(const QByteArray &id, QObject *parent)
        : QObject(parent)
    {
        setObjectName(QString::fromLatin1(id));
    }
};

class BrightLamp : public Lamp
{
    Q_OBJECT

public:
    using Lamp::Lamp;
};

/// Lamps are the children of the document's context; attaching makes a missing one.
struct LampReferences
{
    static int typeId() { return 7; }
    static QByteArray identifier(Lamp *lamp) { return lamp->objectName().toLatin1(); }
    static Lamp *getReference(const LinkedDocument *document, const QByteArray &identifier)
    {
        return document->context()
                   ? document->context()->findChild<Lamp *>(QString::fromLatin1(identifier))
                   : nullptr;
    }
    static void attachReference(LinkedDocument *document, const QByteArray &identifier)
    {
        if (!getReference(document, identifier))
            new Lamp(identifier, document->context());
    }
};

} // namespace

class TestLinkedDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void structs();
    void contextIsNotOwned();
    void roundTripThroughAFile();
    void whatIsUnknownIsKept();
    void mixedEscapesAreFound();
    void filesThatAreNoDocuments_data();
    void filesThatAreNoDocuments();
    void saveThatFailsLeavesTheFile();
    void whatIsNoReference();
    void references();
    void attachReferences();
    void fieldValues_data();
    void fieldValues();
    void fieldWithoutDocument();

private:
    QTemporaryDir m_directory;
};

void TestLinkedDocument::initTestCase()
{
    LinkedDocument::registerReferenceType<LampReferences, Lamp>();
}

void TestLinkedDocument::structs()
{
    LinkedDocument document;
    document.setStructValue("a", "x", QJsonValue::Undefined);
    QCOMPARE(document.structKeys(), QStringList());

    document.setStructValue("b", "x", 1);
    document.setStructValue("a", "x", "one");
    document.setStructValue("a", "y", QJsonValue::Null);
    QCOMPARE(document.structKeys(), (QStringList{"a", "b"}));
    QCOMPARE(document.getStructValue("b", "x"), QJsonValue(1));
    QVERIFY(document.getStructValue("b", "y").isUndefined());

    document.setStructValue("a", "x", QJsonValue::Undefined);
    QVERIFY(document.getStructValue("a", "x").isUndefined());
    QVERIFY(document.getStructValue("a", "y").isNull());
    document.removeStruct("a");
    QCOMPARE(document.structKeys(), QStringList{"b"});
}

void TestLinkedDocument::contextIsNotOwned()
{
    QScopedPointer<Context> context(new Context);
    LinkedDocument document(context.data());
    context.reset();
    QCOMPARE(document.context(), nullptr);
}

void TestLinkedDocument::roundTripThroughAFile()
{
    const QString path = m_directory.filePath("round.json");
    const QString key = QString::fromUtf8("key \u00e4");
    const QJsonArray values{
        "text",
        QString::fromUtf8("\u00e4\u6f22\U0001F600\n"),
        QString(QChar(0)),
        0.1,
        9007199254740991LL,
        true,
        QJsonValue::Null,
        QJsonArray{1, QJsonArray{"deep"}},
        ""};
    LinkedDocument document;
    for (int i = 0; i < values.size(); ++i)
        document.setStructValue(key, QString::number(i), values.at(i));
    QString error;
    QVERIFY2(document.save(path, &error), qPrintable(error));

    LinkedDocument loaded;
    loaded.setStructValue("gone", "x", 1);
    QVERIFY2(loaded.load(path, &error), qPrintable(error));
    QCOMPARE(loaded.structKeys(), QStringList{key});
    for (int i = 0; i < values.size(); ++i)
        QCOMPARE(loaded.getStructValue(key, QString::number(i)), QJsonValue(values.at(i)));

    const QByteArray bytes = readFile(path);
    QVERIFY(loaded.save(path));
    QCOMPARE(readFile(path), bytes);
}

void TestLinkedDocument::whatIsUnknownIsKept()
{
    const QString path = m_directory.filePath("newer.json");
    const QByteArray newer =
        R"({"version": 9, "window": {"x": [1, {"structs": null}]},)"
        R"( "structs": {"a": {"known": 1, "novel": {"deep": [true]}}, "later": {}}})";
    writeFile(path, newer);
    LinkedDocument document;
    QVERIFY(document.load(path));
    document.setStructValue("a", "known", 2);
    QVERIFY(document.save(path));

    QByteArray expected = newer;
    expected.replace("\"known\": 1", "\"known\": 2");
    QCOMPARE(QJsonDocument::fromJson(readFile(path)), QJsonDocument::fromJson(expected));
}

void TestLinkedDocument::mixedEscapesAreFound()
{
    const QString path = m_directory.filePath("mixed.json");
    QByteArray names;
    for (int i = 0; i < 20; ++i)
        names += (i % 2 ? "\"\u00e4" : "\"\\u00e4") + QByteArray::number(i)
                 + "\": " + QByteArray::number(i) + ",";
    writeFile(path, "{" + names + "\"structs\": {\"s\": {" + names + "\"end\": 0}}}");
    LinkedDocument document;
    QVERIFY(document.load(path));
    for (int i = 0; i < 20; ++i)
        QCOMPARE(document.getStructValue("s", QString::fromUtf8("\u00e4%1").arg(i)), QJsonValue(i));
}

void TestLinkedDocument::filesThatAreNoDocuments_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const QByteArray &content, const char *reason) {
        QTest::newRow(name) << content << reason;
    };
    row("empty", "", "illegal value, at byte 0");
    row("cut", "{\"structs\": {\"a\"", "at byte 16");
    row("not json", "collection", "illegal value, at byte");
    row("array", "[{\"structs\": {}}]", "not a JSON object");
    row("other json", "{\"name\": \"x\"}", "not a document: it has no object \"structs\"");
    row("structs no object", "{\"structs\": []}", "not a document: it has no object \"structs\"");
    row("struct no object", "{\"structs\": {\"a\": {}, \"b\": 1}}",
        "struct \"b\" is not an object");
    row("too deep", "{\"structs\": {\"a\": " + QByteArray(5000, '['), "too deeply nested");
}

void TestLinkedDocument::filesThatAreNoDocuments()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, reason);
    const QString path = m_directory.filePath("strange.json");
    writeFile(path, content);
    LinkedDocument document;
    document.setStructValue("mine", "x", 1);
    QString error;
    QVERIFY(!document.load(path, &error));
    QVERIFY2(error.startsWith(path + ": ") && error.contains(reason), qPrintable(error));
    QVERIFY(!document.load(m_directory.path(), &error));
    QVERIFY(!document.load(m_directory.filePath("missing.json"), &error));
    QVERIFY2(error.contains("missing.json: No such file"), qPrintable(error));
    QCOMPARE(document.structKeys(), QStringList{"mine"});
}

void TestLinkedDocument::saveThatFailsLeavesTheFile()
{
    const QDir directory(m_directory.filePath("full"));
    QVERIFY(directory.mkpath("."));
    const QString path = directory.filePath("collection.json");
    LinkedDocument document;
    QVERIFY(document.save(path));
    const QByteArray before = readFile(path);
    for (const int size : {200, 100000}) { // fails in the last buffer, and before
        document.setStructValue("a", "x", QString(size, 'x'));
        QString error;
        {
            const FileSizeLimit disk(size / 2);
            QVERIFY(!document.save(path, &error));
        }
        QCOMPARE(error, path + ": can't be written whole");
        QCOMPARE(readFile(path), before);
        QCOMPARE(directory.entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size(), 1);
    }
    QString error;
    QVERIFY(!document.save(directory.filePath("no/such/directory.json"), &error));
    QVERIFY2(error.contains("directory.json: "), qPrintable(error));
    QVERIFY(!document.save(directory.path()));
}

void TestLinkedDocument::references()
{
    const QString path = m_directory.filePath("references.json");
    for (const char *identifier : {"desk", "a:b:", "ref:1:x", " ", "\xe4"}) {
        const QString reference = "ref:7:" + QString::fromLatin1(identifier);
        Context context;
        Lamp other("other", &context);
        BrightLamp lamp(identifier, &context);
        LinkedDocument document(&context);
        QCOMPARE(document.encodeReference(&lamp), reference);
        document.setStructValue("room", "light", reference);
        QVERIFY(document.save(path));

        LinkedDocument loaded(&context);
        QVERIFY(loaded.load(path));
        QCOMPARE(loaded.decodeReference(loaded.getStructValue("room", "light").toString()), &lamp);
        loaded.setContext(nullptr);
        QCOMPARE(loaded.decodeReference(reference), nullptr);
    }
}

void TestLinkedDocument::whatIsNoReference()
{
    Context context;
    Lamp lamp("desk", &context);
    Lamp nameless({}, nullptr);
    LinkedDocument document(&context);
    for (const char *reference :
         {"", "desk", "7:desk", "ref", "ref:", "ref:7", "ref::desk", "ref:x:desk", "ref:8:desk",
          "ref:-7:desk", "ref:+7:desk", "ref: 7:desk", "ref:99999999999:desk", "REF:7:desk",
          " ref:7:desk", "ref:7:lost", "ref:7:"})
        QVERIFY2(!document.decodeReference(reference), reference);
    QCOMPARE(document.encodeReference(nullptr), QString());
    QCOMPARE(document.encodeReference(&context), QString());
    QCOMPARE(document.encodeReference(&nameless), QString());
}

void TestLinkedDocument::attachReferences()
{
    Context context;
    Lamp desk("desk", &context);
    LinkedDocument document(&context);
    document.setStructValue("a", "light", "ref:7:desk");
    document.setStructValue("a", "second", "ref:7:bed");
    document.setStructValue("b", "light", "ref:7:bed");
    document.setStructValue("b", "text", "desk");
    document.setStructValue("b", "number", 7);
    document.attachReferences();
    QStringList names;
    for (const Lamp *lamp : context.findChildren<Lamp *>())
        names += lamp->objectName();
    QCOMPARE(names, (QStringList{"desk", "bed"}));
}

void TestLinkedDocument::fieldValues_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QJsonValue>("stored");
    QTest::addColumn<QVariant>("read");
    QTest::newRow("text") << QVariant("x") << QJsonValue("x") << QVariant("x");
    QTest::newRow("list") << QVariant(QStringList{"a", "b"}) << QJsonValue(QJsonArray{"a", "b"})
                          << QVariant(QVariantList{"a", "b"});
    QTest::newRow("none removes") << QVariant() << QJsonValue(QJsonValue::Undefined) << QVariant();
}

void TestLinkedDocument::fieldValues()
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

void TestLinkedDocument::fieldWithoutDocument()
{
    DataField field;
    field.write(nullptr, "a", 1);
    QVERIFY(!field.read(nullptr, "a").isValid());
}

QTEST_GUILESS_MAIN(TestLinkedDocument)
#include "tst_linkeddocument.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <norvakcrypto/jsonsignature.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

#include <cstring>
#include <limits>
#include <memory>

using nk::crypto::JsonSignature;

namespace {

QByteArray canonical(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    return document.isObject() ? JsonSignature::toByteArray(document.object())
                               : error.errorString().toUtf8();
}

QByteArray canonicalNumber(double number)
{
    const QByteArray text = JsonSignature::toByteArray({{"n", number}});
    return text.isEmpty() ? text : text.mid(5, text.size() - 6);
}

double numberOfBits(quint64 bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

} // namespace

class tst_JsonSignature : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void numbers_data();
    void numbers();
    void numbersReadBackExactly();
    void documents_data();
    void documents();
    void membersOfMixedSpelling();
    void namesThatComeTwiceHaveNoForm();
    void loneSurrogatesHaveNoForm();
    void deepObjectsTakeNoStack();
};

void tst_JsonSignature::numbers_data()
{
    QTest::addColumn<quint64>("bits");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](quint64 bits, const char *text) {
        QTest::newRow(text) << bits << QByteArray(text);
    };
    // RFC 8785, appendix B.
    row(0x0000000000000000, "0");
    row(0x8000000000000000, "0");
    row(0x0000000000000001, "5e-324");
    row(0x7fefffffffffffff, "1.7976931348623157e+308");
    row(0x4340000000000000, "9007199254740992");
    row(0x4430000000000000, "295147905179352830000");
    row(0x44b52d02c7e14af6, "1e+23");
    row(0x444b1ae4d6e2ef4f, "999999999999999900000");
    row(0x444b1ae4d6e2ef50, "1e+21");
    row(0x3eb0c6f7a0b5ed8c, "9.999999999999997e-7");
    row(0x3eb0c6f7a0b5ed8d, "0.000001");
    row(0x41b3de4355555554, "333333333.33333325");
    row(0xbecbf647612f3696, "-0.0000033333333333333333");
    row(0x43143ff3c1cb0959, "1424953923781206.2");
    // The borders of the fast path for integers.
    row(0x433fffffffffffff, "9007199254740991");
    row(0xc33fffffffffffff, "-9007199254740991");
    row(0x3ff8000000000000, "1.5");
    row(0x3fb999999999999a, "0.1");
}

void tst_JsonSignature::numbers()
{
    QFETCH(quint64, bits);
    QFETCH(QByteArray, text);
    QCOMPARE(canonicalNumber(numberOfBits(bits)), text);
}

void tst_JsonSignature::numbersReadBackExactly()
{
    QRandomGenerator64 random(8785);
    for (int i = 0; i < 20000; ++i) {
        const double number = numberOfBits(random.generate());
        if (!std::isfinite(number))
            continue;
        const QByteArray text = canonicalNumber(number);
        QVERIFY2(text.toDouble() == number && text.size() <= 25, text.constData());
    }
}

void tst_JsonSignature::documents_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const char *json, const char *text) {
        QTest::newRow(name) << QByteArray(json) << QByteArray(text);
    };
    // RFC 8785, sections 3.2.2 to 3.2.4.
    row("the standard's document",
        R"({"numbers": [333333333.33333329, 1E30, 4.50, 2e-3, 0.000000000000000000000000001],
            "string": "\u20ac$\u000F\u000aA'\u0042\u0022\u005c\\\"\/",
            "literals": [null, true, false]})",
        R"({"literals":[null,true,false],"numbers":[333333333.3333333,1e+30,4.5,0.002,1e-27],)"
        R"("string":"€$\u000f\nA'B\"\\\\\"/"})");
    row("the standard's order of names",
        R"({"\u20ac": "Euro Sign", "\r": "Carriage Return", "\ufb33": "Hebrew Letter Dalet With Dagesh",
            "1": "One", "\ud83d\ude00": "Emoji: Grinning Face", "\u0080": "Control",
            "\u00f6": "Latin Small Letter O With Diaeresis"})",
        "{\"\\r\":\"Carriage Return\",\"1\":\"One\",\"\xc2\x80\":\"Control\","
        "\"\xc3\xb6\":\"Latin Small Letter O With Diaeresis\",\"\xe2\x82\xac\":\"Euro Sign\","
        "\"\xf0\x9f\x98\x80\":\"Emoji: Grinning Face\","
        "\"\xef\xac\xb3\":\"Hebrew Letter Dalet With Dagesh\"}");
    row("empty values", R"({"o":{},"a":[ ],"s":""})", R"({"a":[],"o":{},"s":""})");
    row("every short escape", R"({"s":"\b\t\n\f\r\"\\"})", R"({"s":"\b\t\n\f\r\"\\"})");
    row("control characters", R"({"s":"\u0000\u0001\u000b\u000e\u001f\u007f"})",
        "{\"s\":\"\\u0000\\u0001\\u000b\\u000e\\u001f\x7f\"}");
    row("what needs no escape", R"({"s":"\/\u2028\ufeff\uffff'<>&"})",
        "{\"s\":\"/\xe2\x80\xa8\xef\xbb\xbf\xef\xbf\xbf'<>&\"}");
    row("names are escaped too", R"({"a\"b\n":1})", R"({"a\"b\n":1})");
    row("a name before its longer one", R"({"ab":1,"a":2,"":3,"aa":4})",
        R"({"":3,"a":2,"aa":4,"ab":1})");

    row("order on every level, none in arrays",
        R"({"b":{"d":1,"c":2},"a":[{"f":1,"e":2},"z","y"]})",
        R"({"a":[{"e":2,"f":1},"z","y"],"b":{"c":2,"d":1}})");
    row("one number in many spellings", R"({"a":[1,1.0,1e0,10e-1,0.1e1,-0,-0.0]})",
        R"({"a":[1,1,1,1,1,0,0]})");
    row("integers past the doubles", R"({"a":[9007199254740993,18446744073709551616]})",
        R"({"a":[9007199254740992,18446744073709552000]})");
}

void tst_JsonSignature::documents()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, text);
    QCOMPARE(canonical(json), text);
    QCOMPARE(canonical(text), text);
}

void tst_JsonSignature::membersOfMixedSpelling()
{
    // Raw and escaped spellings are stored differently; no member may be lost for that.
    QCOMPARE(
        canonical("{\"\xc3\xa4\":1,\"\\u00e5\":2,\"z\":3,\"\\u20ac\":4,\"\xc3\xb6\":5}"),
        QByteArray("{\"z\":3,\"\xc3\xa4\":1,\"\xc3\xa5\":2,\"\xc3\xb6\":5,\"\xe2\x82\xac\":4}"));
}

void tst_JsonSignature::namesThatComeTwiceHaveNoForm()
{
    // Qt's parser keeps one member of each name, but not of these, with NULs for "@": they lose it
    // its order.
    const QByteArray names[] = {"00f6$@@", "00f6$@\x19\\6", "00f6$@0", "00f6$@@"};
    QByteArray json;
    for (QByteArray name : names)
        json += ",\"" + name.replace('@', '\0') + "\":1";
    json[0] = '{';
    const QJsonObject object = QJsonDocument::fromJson(json + '}').object();
    QCOMPARE(object.keys().count(QString("00f6$@@").replace('@', QChar::Null)), 2);
    QCOMPARE(JsonSignature::toByteArray(object), QByteArray());
    QCOMPARE(JsonSignature::toByteArray({{"inside", object}}), QByteArray());
}

void tst_JsonSignature::loneSurrogatesHaveNoForm()
{
    const QString lone = QString("a") + QChar(0xd800) + "b";
    QCOMPARE(JsonSignature::toByteArray({{"s", lone}}), QByteArray());
    QCOMPARE(JsonSignature::toByteArray({{lone, 1}}), QByteArray());
    QCOMPARE(JsonSignature::toByteArray({{"a", QJsonArray{QString(QChar(0xdc00))}}}), QByteArray());
}

void tst_JsonSignature::deepObjectsTakeNoStack()
{
    // On a thread with hardly more stack than it takes to begin, and far less than 1000 calls need.
    constexpr int depth = 1000;
    QJsonObject object;
    QJsonArray array;
    for (int i = 1; i < depth; ++i) {
        object = QJsonObject{{"o", object}};
        array = QJsonArray{array};
    }
    QByteArray text;
    QByteArray arrayText;
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        text = JsonSignature::toByteArray(object);
        arrayText = JsonSignature::toByteArray({{"a", array}});
    }));
    thread->setStackSize(256 * 1024);
    thread->start();
    QVERIFY(thread->wait());
    QCOMPARE(text, QByteArray("{\"o\":").repeated(depth - 1) + "{}" + QByteArray(depth - 1, '}'));
    QCOMPARE(arrayText, "{\"a\":" + QByteArray(depth, '[') + QByteArray(depth, ']') + '}');
}

QTEST_APPLESS_MAIN(tst_JsonSignature)
#include "tst_jsonsignature.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/linktypes.h"
#include "sources/couchdbpackageaccessor.h"
#include "support/scopeddatalocation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

using namespace nk::pm;
using nk::pm::test::ScopedDataLocation;

namespace {

const QUrl databaseUrl(QStringLiteral("http://127.0.0.1:5984/catalogue"));

QJsonObject row(const char *kind, const QJsonObject &document)
{
    return {{"id", document.value("_id")}, {"key", QJsonArray{kind}}, {"value", document}};
}

QByteArray response(const QJsonArray &rows)
{
    return QJsonDocument(QJsonObject{{"total_rows", rows.size()}, {"rows", rows}}).toJson();
}

} // namespace

class TestCouchDBPackageAccessor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sortsRowsByKind();
    void readsPackages();
    void readsKeywords();
    void isEmptyWhenUnreadable_data();
    void isEmptyWhenUnreadable();
    void survivesHostileRows();

private:
    CouchDBPackageAccessor load(const QByteArray &bytes);

    ScopedDataLocation m_data;
};

CouchDBPackageAccessor TestCouchDBPackageAccessor::load(const QByteArray &bytes)
{
    QFile file(m_data.filePath("response"));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("Can't write the response");
    file.close();
    CouchDBPackageAccessor accessor(file.fileName(), databaseUrl, nullptr);
    accessor.load();
    return accessor;
}

void TestCouchDBPackageAccessor::sortsRowsByKind()
{
    const auto accessor = load(response({
        row("link", {{"_id", "link:1"}, {"from", "b"}, {"to", "k"}, {"linkType", "is_a"}}),
        row("package", {{"_id", "package:b"}}),
        row("keyword", {{"_id", "keyword:k"}}),
        row("package", {{"_id", "package:a"}}),
        row("surprise", {{"_id", "whatever:1"}, {"from", "a"}, {"to", "k"}, {"linkType", "IS_A"}}),
        QJsonObject{{"key", QJsonArray()}, {"value", QJsonObject{{"_id", "x"}}}},
    }));
    QCOMPARE(accessor.packageCount(), 2);
    QCOMPARE(accessor.packageInfo(0).id, QString("b"));
    QCOMPARE(accessor.packageInfo(1).id, QString("a"));
    QCOMPARE(accessor.keywordCount(), 1);
    QCOMPARE(accessor.linkCount(), 3);
    QCOMPARE(accessor.linkInfo(0).type, int(IsA));
    QCOMPARE(accessor.linkInfo(0).from, QString("b"));
    QCOMPARE(accessor.linkInfo(0).to, QString("k"));
    QCOMPARE(accessor.linkInfo(1).type, -1);
    QVERIFY(accessor.linkInfo(2).from.isEmpty());
}

void TestCouchDBPackageAccessor::readsPackages()
{
    const auto accessor = load(response({
        row("package", {{"_id", "package:oak"},
                        {"_rev", "3-abc"},
                        {"packageType", "wood:oak"},
                        {"manifest", QJsonObject{{"name", "Oak"}}}}),
        row("package", {{"_id", "12345678"}}),
        row("package", {{"manifest", 7}}),
    }));
    const PackageInfo oak = accessor.packageInfo(0);
    QCOMPARE(oak.id, QString("oak"));
    QCOMPARE(oak.type, QString("wood:oak"));
    QCOMPARE(oak.revision, QString("3-abc"));
    QCOMPARE(accessor.manifest(0), (QJsonObject{{"name", "Oak"}}));
    QCOMPARE(
        accessor.fileUrl(0, "no such.svg"),
        QUrl("http://127.0.0.1:5984/catalogue/package:oak/no such.svg"));
    QVERIFY(accessor.packageInfo(1).id.isEmpty());
    QVERIFY(accessor.packageInfo(2).id.isEmpty());
    QVERIFY(accessor.manifest(2).isEmpty());
}

void TestCouchDBPackageAccessor::readsKeywords()
{
    const auto accessor = load(response({
        row("keyword",
            {{"_id", "keyword:tree"},
             {"keywordType", "noun"},
             {"strings",
              QJsonObject{
                  {"fr", QJsonArray{QJsonObject{{"sg", "arbre"}}}},
                  {"de", QJsonArray{QJsonObject{{"sg", "Baum"}, {"pl", "Bäume"}}}},
                  {"en", QJsonArray{QJsonObject{{"pl", "trees"}}}}}}}),
        row("keyword", {{"_id", "keyword:url"},
                        {"keywordType", "literal"},
                        {"string", "4K"},
                        {"strings", QJsonObject{{"de", QJsonArray{"no"}}}}}),
        row("keyword", {{"_id", "keyword:odd"}, {"keywordType", "verb"}}),
    }));
    const KeywordInfo tree = accessor.keywordInfo(0);
    QCOMPARE(tree.id, QString("tree"));
    QCOMPARE(tree.type, 0);
    QCOMPARE(tree.strings.size(), 3);
    QCOMPARE(tree.strings.at(0).language, QString("de"));
    QCOMPARE(tree.strings.at(0).plural, QString("Bäume"));
    QCOMPARE(tree.strings.at(1).plural, QString("trees"));
    QCOMPARE(tree.strings.at(2).language, QString("fr"));
    const KeywordInfo literal = accessor.keywordInfo(1);
    QCOMPARE(literal.type, 3);
    QCOMPARE(literal.strings.size(), 1);
    QCOMPARE(literal.strings.at(0).string, QString("4K"));
    QVERIFY(literal.strings.at(0).language.isEmpty());
    QCOMPARE(accessor.keywordInfo(2).type, -1);
    QVERIFY(accessor.keywordInfo(2).strings.isEmpty());
}

void TestCouchDBPackageAccessor::isEmptyWhenUnreadable_data()
{
    const QByteArray whole = response({row("package", {{"_id", "package:a"}})});
    const int limit = int(CouchDBPackageAccessor::maximumResponseSize);
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("packages");

    QTest::newRow("no bytes") << QByteArray() << 0;
    QTest::newRow("cut in the middle") << whole.left(whole.size() / 2) << 0;
    QTest::newRow("an array") << QByteArray("[1]") << 0;
    QTest::newRow("rows of another type") << QByteArray("{\"rows\":{}}") << 0;
    QTest::newRow("as large as is read") << whole + QByteArray(limit - whole.size(), ' ') << 1;
    QTest::newRow("cut at 4 MiB") << QByteArray(whole).insert(1, QByteArray(limit, ' ')) << 0;
}

void TestCouchDBPackageAccessor::isEmptyWhenUnreadable()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, packages);
    const auto accessor = load(bytes);
    QCOMPARE(accessor.packageCount(), packages);
    QCOMPARE(accessor.isRefused(), packages == 0);
    QCOMPARE(accessor.keywordCount(), 0);
    QCOMPARE(accessor.languages(), (QStringList{"de", "en"}));
}

void TestCouchDBPackageAccessor::survivesHostileRows()
{
    const auto accessor = load(
        R"({"rows":[null,7,[],"x",{"key":7,"value":[]},{"key":["package"],"value":"x"},
            {"key":[{"package":1}],"value":{"_id":{}}},{"key":["keyword"],"value":{"strings":[]}}]})");
    QCOMPARE(accessor.packageCount(), 1);
    QCOMPARE(accessor.keywordCount(), 1);
    QCOMPARE(accessor.linkCount(), 6);
    for (int i = 0; i < accessor.linkCount(); ++i)
        QCOMPARE(accessor.linkInfo(i).type, -1);
    QVERIFY(accessor.packageInfo(0).id.isEmpty());
    QCOMPARE(accessor.keywordInfo(0).type, -1);

    CouchDBPackageAccessor withoutFile(QString(), databaseUrl, nullptr);
    QCOMPARE(withoutFile.languages(), (QStringList{"de", "en"}));
    withoutFile.load();
    QCOMPARE(withoutFile.packageCount(), 0);
}

QTEST_GUILESS_MAIN(TestCouchDBPackageAccessor)
#include "tst_couchdbpackageaccessor.moc"

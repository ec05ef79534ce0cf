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
    QStringList links;
    for (int i = 0; i < accessor.linkCount(); ++i) {
        const LinkInfo link = accessor.linkInfo(i);
        links += QString("%1 %2 %3").arg(link.from).arg(link.type).arg(link.to);
    }
    QCOMPARE(links, (QStringList{"b 0 k", "a -1 k", " -1 "}));
}

void TestCouchDBPackageAccessor::readsPackages()
{
    const auto accessor = load(response({
        row("package", {{"_id", "package:oak"},
                        {"_rev", "3-abc"},
                        {"packageType", "wood:oak"},
                        {"_attachments",
                         QJsonObject{
                             {"a", QJsonObject{{"digest", "md5-1"}, {"length", 3}}},
                             {"b", QJsonObject{{"digest", "md5-1"}, {"length", 3}}},
                             {"c", QJsonObject{{"digest", "md5-SooI8J03tzeVZJA4QItfMw=="}}}}},
                        {"manifest", QJsonObject{{"name", "Oak"}}}}),
        row("package", {{"_id", "12345678"}, {"manifest", 7}}),
    }));
    QVERIFY(accessor.fileDownload("4A8A08F09D37B73795649038408B5F33")); // of "c"
    QVERIFY(!accessor.fileDownload("4a8a08f09d37b73795649038408b5f34"));
    const PackageInfo oak = accessor.packageInfo(0);
    QCOMPARE(oak.id, QString("oak"));
    QCOMPARE(oak.type, QString("wood:oak"));
    QCOMPARE(oak.revision, QString("3-abc"));
    QCOMPARE(accessor.manifest(0), (QJsonObject{{"name", "Oak"}}));
    QCOMPARE(
        accessor.fileUrl(0, "no such.svg"),
        QUrl("http://127.0.0.1:5984/catalogue/package:oak/no such.svg"));
    const auto files = accessor.files(0);
    QCOMPARE(files->size(), 2);
    QCOMPARE(files->at(0).name + files->at(1).name, QString("bc"));
    QCOMPARE(files->at(0).size, 3);
    QCOMPARE(files->at(1).size, -1);
    QCOMPARE(files->at(0).digest + files->at(1).digest, "4a8a08f09d37b73795649038408b5f33");
    QVERIFY(accessor.packageInfo(1).id.isEmpty());
    QVERIFY(accessor.manifest(1).isEmpty());
}

// What stands in the strings of each type is read as from a file of a local package.
void TestCouchDBPackageAccessor::readsKeywords()
{
    const QJsonArray baum{QJsonObject{{"sg", "Baum"}, {"pl", "Bäume"}}};
    const auto accessor = load(response({
        row("keyword", {{"_id", "keyword:tree"},
                        {"keywordType", "noun"},
                        {"strings", QJsonObject{{"de", baum}}}}),
        row("keyword", {{"_id", "keyword:url"}, {"keywordType", "literal"}, {"string", "4K"}}),
        row("keyword", {{"_id", "keyword:odd"}, {"keywordType", "verb"}}),
    }));
    QStringList keywords;
    for (int i = 0; i < accessor.keywordCount(); ++i) {
        const KeywordInfo keyword = accessor.keywordInfo(i);
        keywords += keyword.id + ' ' + QString::number(keyword.type);
        for (const KeywordString &text : keyword.strings)
            keywords.last() += ' ' + text.language + ':' + text.string + '/' + text.plural;
    }
    QCOMPARE(keywords, (QStringList{"tree 0 de:Baum/Bäume", "url 3 :4K/", "odd -1"}));
}

void TestCouchDBPackageAccessor::isEmptyWhenUnreadable()
{
    const QByteArray whole = response({row("package", {{"_id", "package:a"}})});
    const int limit = int(CouchDBPackageAccessor::maximumResponseSize);
    for (const QByteArray &bytes :
         {QByteArray(), whole.left(whole.size() / 2), QByteArray("[1]"),
          QByteArray("{\"rows\":{}}"), QByteArray(whole).insert(1, QByteArray(limit, ' '))}) {
        const auto accessor = load(bytes);
        QVERIFY2(accessor.packageCount() == 0 && accessor.isRefused(), bytes.left(20));
    }
    const auto accessor = load(whole + QByteArray(limit - whole.size(), ' '));
    QCOMPARE(accessor.packageCount(), 1);
    QVERIFY(!accessor.isRefused());
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
    CouchDBPackageAccessor fileGone(m_data.filePath("gone"), databaseUrl, nullptr);
    fileGone.load();
    QVERIFY(!fileGone.isRefused());
}

QTEST_GUILESS_MAIN(TestCouchDBPackageAccessor)
#include "tst_couchdbpackageaccessor.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "couchdb/couchpush.h"
#include "repository/packageaccessor.h"
#include "sources/couchdbpackagesource.h"
#include "sources/localpackagesource.h"
#include "support/couchdbserver.h"
#include "support/scopeddatalocation.h"

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::publisher;
using nk::pm::test::CatalogueTree;
using nk::pm::test::CouchDBServer;
using nk::pm::test::ScopedDataLocation;

namespace {

CouchPushReport push(const CatalogueTree &tree, const QUrl &database)
{
    Progress silent;
    return couchPush({tree.path(), database}, silent);
}

/// What an accessor holds, in an order that doesn't depend on the source.
QStringList contents(PackageAccessor &accessor)
{
    accessor.load();
    QStringList lines;
    for (int i = 0; i < accessor.packageCount(); ++i) {
        const PackageInfo info = accessor.packageInfo(i);
        const QByteArray manifest = QJsonDocument(accessor.manifest(i)).toJson();
        lines << "package " + info.id + ' ' + info.type + ' ' + QString::fromUtf8(manifest);
    }
    for (int i = 0; i < accessor.keywordCount(); ++i) {
        const KeywordInfo info = accessor.keywordInfo(i);
        QString line = "keyword " + info.id + ' ' + QString::number(info.type);
        for (const KeywordString &text : info.strings)
            line += ' ' + text.language + '=' + text.string + '/' + text.plural;
        lines << line;
    }
    for (int i = 0; i < accessor.linkCount(); ++i) {
        const LinkInfo info = accessor.linkInfo(i);
        lines << "link " + info.from + ' ' + QString::number(info.type) + ' ' + info.to;
    }
    lines.sort();
    return lines;
}

QStringList contentsOfDatabase(const QUrl &database)
{
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database, &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    return updates.wait(60000) ? contents(*source.getAccessor()) : QStringList();
}

QStringList contentsOfDirectory(const CatalogueTree &tree)
{
    return contents(*LocalPackageSource(tree.path(), nullptr).getAccessor());
}

} // namespace

class TestCouchPush : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void databaseHoldsTheCatalogue();
    void sendsOnlyWhatDiffers();
    void streamsLargeFiles();
    void faultyCatalogueIsNotSent();
    void namesWhatTheServerRefuses();

private:
    ScopedDataLocation m_data;
};

void TestCouchPush::databaseHoldsTheCatalogue()
{
    CouchDBServer server(CouchDBServer::StrongETag);
    CatalogueTree tree;
    tree.fillWithGoods();
    const CouchPushReport report = push(tree, server.databaseUrl());
    QVERIFY(report.pushed);
    QVERIFY(report.newDocuments > 0);
    QVERIFY(report.sentFiles > 0);
    QCOMPARE(contentsOfDatabase(server.databaseUrl()), contentsOfDirectory(tree));
}

void TestCouchPush::sendsOnlyWhatDiffers()
{
    CouchDBServer server(CouchDBServer::StrongETag);
    CatalogueTree tree;
    tree.fillWithGoods();
    tree.package("toys/ball", "{\"name\": \"Ball\"}");
    tree.file("packages/toys/ball/ball.txt", "round");
    tree.file("packages/toys/ball/other.txt", "stays");
    tree.keyword("bouncy");
    QVERIFY(push(tree, server.databaseUrl()).pushed);
    QCOMPARE(server.putDocument("note:mine", {{"text", "not of the catalogue"}}), 201);

    const CouchPushReport again = push(tree, server.databaseUrl());
    QVERIFY(again.pushed);
    QCOMPARE(again.newDocuments + again.changedDocuments + again.removedDocuments, 0);
    QCOMPARE(again.sentFiles, 0);

    const QString before = server.document("package:ball").value("_rev").toString();
    tree.file("packages/toys/ball/ball.txt", "rounder");
    tree.remove("dictionary/bouncy.json");
    tree.link("new", "ball", "relates_to", "ball");
    const CouchPushReport changed = push(tree, server.databaseUrl());
    QVERIFY(changed.pushed);
    QCOMPARE(changed.newDocuments, 1);
    QCOMPARE(changed.changedDocuments, 1);
    QCOMPARE(changed.removedDocuments, 1);
    QCOMPARE(changed.sentFiles, 1);
    QCOMPARE(changed.sentBytes, qint64(7));
    QVERIFY(server.document("package:ball").value("_rev").toString() != before);
    QCOMPARE(server.document("note:mine").value("text").toString(), "not of the catalogue");
    QCOMPARE(contentsOfDatabase(server.databaseUrl()), contentsOfDirectory(tree));

    tree.remove("packages/toys/ball/other.txt");
    QCOMPARE(push(tree, server.databaseUrl()).changedDocuments, 1);
    const QJsonObject held = server.document("package:ball").value("_attachments").toObject();
    QCOMPARE(held.keys(), QStringList{"ball.txt"});
}

void TestCouchPush::streamsLargeFiles()
{
    CouchDBServer server(CouchDBServer::NoETag);
    CatalogueTree tree;
    tree.package("toys/ball");
    tree.file("packages/toys/ball/small.txt", "small");
    tree.file("packages/toys/ball/first.bin", QByteArray(3 * 1024 * 1024, '1'));
    tree.file("packages/toys/ball/second.bin", QByteArray(2 * 1024 * 1024, '2'));
    const CouchPushReport report = push(tree, server.databaseUrl());
    QVERIFY(report.pushed);
    QCOMPARE(report.newDocuments, 1);
    QCOMPARE(report.sentFiles, 3);
    const QJsonObject held = server.document("package:ball").value("_attachments").toObject();
    QCOMPARE(held.keys(), (QStringList{"first.bin", "second.bin", "small.txt"}));
    QCOMPARE(push(tree, server.databaseUrl()).keptDocuments, 1);
}

void TestCouchPush::faultyCatalogueIsNotSent()
{
    CouchDBServer server(CouchDBServer::StrongETag);
    CatalogueTree tree;
    tree.fillWithGoods();
    tree.link("broken", "nobody", "is_a", "nothing");
    const CouchPushReport report = push(tree, server.databaseUrl());
    QVERIFY(!report.pushed);
    QVERIFY(report.problems.hasErrors());
    QVERIFY(server.document("_design/norvak").value("views").isUndefined());
}

void TestCouchPush::namesWhatTheServerRefuses()
{
    CouchDBServer server(CouchDBServer::StrongETag, "writer:secret");
    CatalogueTree tree;
    tree.fillWithGoods();
    const CouchPushReport stranger = push(tree, server.databaseUrl("writer:wrong"));
    QVERIFY(!stranger.pushed);
    QCOMPARE(stranger.problems.errorCount(), 1);
    const QString text = stranger.problems.sorted().first().text;
    QVERIFY2(text.contains("401") && text.contains("127.0.0.1"), qPrintable(text));
    QVERIFY2(!text.contains("wrong"), qPrintable(text)); // credentials are never shown
    QVERIFY(push(tree, server.databaseUrl("writer:secret")).pushed);
}

QTEST_GUILESS_MAIN(TestCouchPush)
#include "tst_couchpush.moc"

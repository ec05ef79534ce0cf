// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "accessorcontents.h"
#include "cataloguetree.h"
#include "couchdb/couchpush.h"
#include "repository/packageaccessor.h"
#include "sources/couchdbpackagesource.h"
#include "sources/localpackageaccessor.h"
#include "support/couchdbserver.h"
#include "support/httptestserver.h"
#include "support/scopeddatalocation.h"

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::publisher;
using namespace nk::pm::test;

namespace {

CouchPushReport push(const CatalogueTree &tree, const QUrl &database)
{
    Progress silent;
    return couchPush({tree.path(), database}, silent);
}

QStringList contentsOfDatabase(const QUrl &database)
{
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database, &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    return updates.wait(60000) ? contentsOf(*source.getAccessor()) : QStringList();
}

QStringList contentsOfDirectory(const CatalogueTree &tree)
{
    LocalPackageAccessor accessor(tree.path());
    return contentsOf(accessor);
}

} // namespace

class TestCouchPush : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sendsOnlyWhatDiffers();
    void sendsLargeFilesByThemselves();
    void faultyCatalogueIsNotSent();
    void namesWhatTheServerRefuses();

private:
    QStringList filesOf(CouchDBServer &server, const QString &package)
    {
        return server.document("package:" + package).value("_attachments").toObject().keys();
    }

    ScopedDataLocation m_data;
    CatalogueTree m_tree;
};

void TestCouchPush::sendsOnlyWhatDiffers()
{
    CouchDBServer server(CouchDBServer::StrongETag);
    const QUrl database = server.databaseUrl();
    m_tree.fillWithGoods();
    m_tree.package("toys/ball", "{\"name\": \"Ball\"}");
    m_tree.file("packages/toys/ball/ball.txt", "round");
    m_tree.file("packages/toys/ball/other.txt", "stays");
    m_tree.keyword("bouncy");
    QVERIFY(push(m_tree, database).pushed);
    QCOMPARE(contentsOfDatabase(database), contentsOfDirectory(m_tree));
    QCOMPARE(server.putDocument("note:mine", {{"text", "not of the catalogue"}}), 201);

    const CouchPushReport again = push(m_tree, database);
    QVERIFY(again.pushed);
    QCOMPARE(again.newDocuments + again.changedDocuments + again.removedDocuments, 0);
    QCOMPARE(again.sentFiles, 0);

    m_tree.file("packages/toys/ball/ball.txt", "rounder");
    m_tree.remove("dictionary/bouncy.json");
    m_tree.link("new", "ball", "relates_to", "ball");
    const CouchPushReport changed = push(m_tree, database);
    QVERIFY(changed.pushed);
    QCOMPARE(changed.newDocuments, 1);
    QCOMPARE(changed.changedDocuments, 1);
    QCOMPARE(changed.removedDocuments, 1);
    QCOMPARE(changed.sentFiles, 1);
    QCOMPARE(changed.sentBytes, qint64(7));
    QCOMPARE(server.document("note:mine").value("text").toString(), "not of the catalogue");
    QCOMPARE(contentsOfDatabase(database), contentsOfDirectory(m_tree));

    m_tree.remove("packages/toys/ball/other.txt");
    QCOMPARE(push(m_tree, database).changedDocuments, 1);
    QCOMPARE(filesOf(server, "ball"), QStringList{"ball.txt"});
}

void TestCouchPush::sendsLargeFilesByThemselves()
{
    CouchDBServer server(CouchDBServer::NoETag);
    CatalogueTree tree;
    tree.package("toys/ball");
    tree.file("packages/toys/ball/small.txt", "small");
    tree.file("packages/toys/ball/first.bin", QByteArray(3 * 1024 * 1024, '1'));
    tree.file("packages/toys/ball/second.bin", QByteArray(2 * 1024 * 1024, '2'));
    const CouchPushReport report = push(tree, server.databaseUrl());
    QVERIFY(report.pushed);
    QCOMPARE(report.sentFiles, 3);
    QCOMPARE(filesOf(server, "ball"), (QStringList{"first.bin", "second.bin", "small.txt"}));
    QCOMPARE(push(tree, server.databaseUrl()).keptDocuments, 1);
}

void TestCouchPush::faultyCatalogueIsNotSent()
{
    CouchDBServer server(CouchDBServer::StrongETag);
    CatalogueTree tree;
    tree.link("broken", "nobody", "is_a", "nothing");
    const CouchPushReport report = push(tree, server.databaseUrl());
    QVERIFY(!report.pushed);
    QVERIFY(report.problems.hasErrors());
    QVERIFY(server.document("_design/norvak").value("views").isUndefined());
}

void TestCouchPush::namesWhatTheServerRefuses()
{
    CouchDBServer server(CouchDBServer::StrongETag, "writer:secret");
    const CouchPushReport stranger = push(m_tree, server.databaseUrl("writer:wrong"));
    QVERIFY(!stranger.pushed);
    QCOMPARE(stranger.problems.errorCount(), 1);
    const QString text = stranger.problems.sorted().first().text;
    QVERIFY2(text.contains("401") && text.contains("127.0.0.1"), qPrintable(text));
    QVERIFY2(!text.contains("wrong"), qPrintable(text)); // credentials are never shown
    QVERIFY(push(m_tree, server.databaseUrl("writer:secret")).pushed);

    HttpTestServer broken(HttpTestAnswer::ok("{\"rows\": ["));
    const auto problems = push(m_tree, broken.url("/db")).problems.sorted();
    QVERIFY(problems.size() == 1 && problems.first().text.contains("broke off"));
}

QTEST_GUILESS_MAIN(TestCouchPush)
#include "tst_couchpush.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "references/packagereference.h"
#include "repository/packageaccessor.h"
#include "repository/packagerepository.h"
#include "sources/couchdbpackagesource.h"
#include "support/couchdbserver.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int patience = 60000; // milliseconds; the machine may be busy

QStringList packages(const PackageRepository &repository)
{
    QStringList ids;
    const auto list = PackageIndex::selectPackages(repository.packageIndex(), {}, {}, {});
    for (int i = 0; i < list.size(); ++i)
        ids << list[i]->id().toString();
    ids.sort();
    return ids;
}

QJsonObject packageDocument(const QString &type)
{
    return {{"packageType", type}, {"manifest", QJsonObject{{"name", "A name"}}}};
}

/// A new database with these packages, all of type "x".
bool putPackages(CouchDBServer &server, const QStringList &ids)
{
    bool isGood = server.createDatabase() == 201;
    for (const QString &id : ids)
        isGood = server.putDocument("package:" + id, packageDocument("x")) == 201 && isGood;
    return isGood;
}

/// An application in small: a data directory, a network manager, a repository with one source.
struct Application
{
    explicit Application(const QUrl &url, bool contentTags = false)
        : source(url, &manager)
        , repository(PackageRepository::PersistSources)
        , changes(&repository, &PackageRepository::packageIndexChanged)
    {
        source.setContentTags(contentTags);
        repository.addSource(&source);
    }
    ~Application() { repository.removeSource(&source); }

    bool waitForPackages(const QStringList &expected)
    {
        QElapsedTimer timer;
        timer.start();
        while (packages(repository) != expected && timer.elapsed() < patience)
            changes.wait(100);
        return packages(repository) == expected;
    }

    /// Polls, and waits for the answer.
    void poll()
    {
        source.update();
        const QList<QObject *> requests = source.children();
        QSignalSpy ended(requests.last(), &QObject::destroyed);
        QVERIFY(ended.wait(patience));
    }

    bool waitForStatus(PackageReference *reference, PackageReference::Status status)
    {
        return QTest::qWaitFor([&] { return reference->status() == status; }, patience);
    }

    QNetworkAccessManager manager;
    CouchDBPackageSource source;
    PackageRepository repository;
    QSignalSpy changes;
};

} // namespace

class TestCouchDB : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheDatabase();
    void installsAttachments();
    void startsWithoutServer();
    void answersWithoutETag();
    void needsCredentials();
};

void TestCouchDB::followsTheDatabase()
{
    ScopedDataLocation data;
    CouchDBServer server(CouchDBServer::StrongETag);
    QCOMPARE(server.createDatabase(), 201);
    QCOMPARE(server.putDocument("package:table", packageDocument("furniture:table")), 201);
    QCOMPARE(
        server.putDocument(
            "keyword:wood",
            {{"keywordType", "noun"},
             {"strings", QJsonObject{{"en", QJsonArray{QJsonObject{{"sg", "wood"}}}}}}}),
        201);
    QCOMPARE(
        server.putDocument("link:1", {{"from", "table"}, {"to", "wood"}, {"linkType", "contains"}}),
        201);

    Application application(server.databaseUrl());
    QVERIFY(application.waitForPackages({"table"}));
    const QString id("table");
    const PackageNode *table = application.repository.packageIndex()->getPackage(QStringRef(&id));
    QCOMPARE(table->keywords().size(), 1);
    QVERIFY(table->revision().startsWith(QString("1-")));

    QTRY_VERIFY(application.source.children().isEmpty());
    QSignalSpy news(&application.source, &PackageSource::updateRequired);
    application.poll(); // a 304
    QCOMPARE(news.count(), 0);
    QCOMPARE(server.putDocument("package:chair", packageDocument("furniture:chair")), 201);
    application.poll();
    QVERIFY(application.waitForPackages({"chair", "table"}));
    QCOMPARE(news.count(), 1);

    QCOMPARE(server.removeDocument("package:table"), 200);
    application.poll();
    QVERIFY(application.waitForPackages({"chair"}));
}

void TestCouchDB::installsAttachments()
{
    ScopedDataLocation data;
    CouchDBServer server(CouchDBServer::StrongETag);
    QCOMPARE(server.createDatabase(), 201);
    QCOMPARE(server.putDocument("package:lamp", packageDocument("furniture:lamp")), 201);
    QCOMPARE(server.putAttachment("package:lamp", "lamp.obj", "first shape"), 201);
    QCOMPARE(server.putAttachment("package:lamp", "with blank.txt", "blank"), 201);
    QCOMPARE(server.putAttachment("package:lamp", "empty.bin", QByteArray()), 201);

    Application application(server.databaseUrl());
    QVERIFY(application.waitForPackages({"lamp"}));
    PackageReference *lamp = application.repository.packageReference("lamp");
    QVERIFY(application.waitForStatus(lamp, PackageReference::Installed));
    QCOMPARE(readFile(lamp->fileUrl("lamp.obj").toLocalFile()), QByteArray("first shape"));
    QCOMPARE(readFile(lamp->fileUrl("with blank.txt").toLocalFile()), QByteArray("blank"));
    QVERIFY(QFile::exists(lamp->fileUrl("empty.bin").toLocalFile()));

    QCOMPARE(server.putAttachment("package:lamp", "lamp.obj", "second shape"), 201);
    application.poll();
    QVERIFY(QTest::qWaitFor(
        [&] { return readFile(lamp->fileUrl("lamp.obj").toLocalFile()) == "second shape"; },
        patience));
}

void TestCouchDB::startsWithoutServer()
{
    ScopedDataLocation data;
    auto server = std::make_unique<CouchDBServer>(CouchDBServer::StrongETag);
    QVERIFY(putPackages(*server, {"a"}));
    const QUrl url = server->databaseUrl();
    {
        Application application(url);
        QVERIFY(application.waitForPackages({"a"}));
    }
    server.reset();

    QTest::ignoreMessage(QtDebugMsg, "code 0");
    Application application(url);
    QVERIFY(application.waitForPackages({"a"}));
    QTRY_VERIFY_WITH_TIMEOUT(application.source.children().isEmpty(), patience); // the poll failed

    server = std::make_unique<CouchDBServer>(CouchDBServer::StrongETag, QString(), url.port());
    QVERIFY(putPackages(*server, {"b"}));
    application.poll();
    QVERIFY(application.waitForPackages({"b"}));
}

void TestCouchDB::answersWithoutETag()
{
    for (const bool contentTags : {false, true}) { // each poll is news, or the content is the tag
        ScopedDataLocation data;
        CouchDBServer server(CouchDBServer::NoETag);
        QVERIFY(putPackages(server, {"a"}));
        Application application(server.databaseUrl(), contentTags);
        QVERIFY(application.waitForPackages({"a"}));
        QSignalSpy news(&application.source, &PackageSource::updateRequired);
        application.poll();
        QCOMPARE(news.count(), contentTags ? 0 : 1);
        QCOMPARE(server.putDocument("package:b", packageDocument("x")), 201);
        application.poll();
        QVERIFY(application.waitForPackages({"a", "b"}));
        CouchDBPackageSource restarted(server.databaseUrl(), nullptr);
        const auto accessor = restarted.getAccessor();
        accessor->load();
        QCOMPARE(accessor->packageCount(), contentTags ? 2 : 0);
    }
}

void TestCouchDB::needsCredentials()
{
    ScopedDataLocation data;
    CouchDBServer server(CouchDBServer::StrongETag, "reader:secret");
    QVERIFY(putPackages(server, {"a"}));
    QCOMPARE(server.putAttachment("package:a", "a.bin", "content"), 201);
    {
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^code (401|0)$"));
        Application stranger(server.databaseUrl());
        QTRY_VERIFY_WITH_TIMEOUT(stranger.source.children().isEmpty(), patience);
        QVERIFY(packages(stranger.repository).isEmpty());
    }
    Application reader(server.databaseUrl("reader:secret"));
    QVERIFY(reader.waitForPackages({"a"}));
    PackageReference *reference = reader.repository.packageReference("a");
    QVERIFY(reader.waitForStatus(reference, PackageReference::Installed));
}

QTEST_GUILESS_MAIN(TestCouchDB)
#include "tst_couchdb.moc"

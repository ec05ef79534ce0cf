// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"
#include "sources/couchdbpackagesource.h"
#include "support/httptestserver.h"
#include "support/scopeddatalocation.h"

#include <QCryptographicHash>
#include <QLockFile>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTimerEvent>
#include <QtTest>

using namespace nk::pm;
using nk::pm::test::HttpTestAnswer;
using nk::pm::test::HttpTestRequest;
using nk::pm::test::HttpTestServer;
using nk::pm::test::ScopedDataLocation;

namespace {

/// A view response with one package row for each name.
QByteArray view(const QStringList &names)
{
    QStringList rows;
    for (const QString &name : names)
        rows << QString(R"({"key":["package"],"value":{"_id":"package:%1"}})").arg(name);
    return "{\"rows\":[" + rows.join(',').toUtf8() + "]}";
}

QByteArray quotedSha256(const QByteArray &bytes)
{
    return '"' + QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex() + '"';
}

/// A database whose view the test sets, with the conditional answers of CouchDB 1.x.
class Database
{
public:
    Database()
        : server([this](const HttpTestRequest &request) { return answer(request); })
    {}

    QUrl url() const { return server.url("/db"); }
    QDir persistDirectory(const ScopedDataLocation &data) const
    {
        const QByteArray name =
            QCryptographicHash::hash(url().toString().toLatin1(), QCryptographicHash::Md5);
        return QDir(data.filePath("packages/couchdb/" + name.toHex()));
    }
    QByteArray lastCondition() const
    {
        return server.requests().last().headers.value("if-none-match");
    }

    QByteArray body = view({"a"});
    QByteArray etag = "\"one\"";
    HttpTestServer server;

private:
    HttpTestAnswer answer(const HttpTestRequest &request) const
    {
        if (request.target != "/db/_design/norvak/_view/packages")
            return HttpTestAnswer::of(404);
        if (!etag.isEmpty() && request.headers.value("if-none-match") == etag)
            return HttpTestAnswer::of(304);
        return HttpTestAnswer::of(
            200, body, etag.isEmpty() ? QByteArray() : "ETag: " + etag + "\r\n");
    }
};

QStringList packages(PackageSource &source)
{
    const auto accessor = source.getAccessor();
    accessor->load();
    QStringList ids;
    for (int i = 0; i < accessor->packageCount(); ++i)
        ids << accessor->packageInfo(i).id;
    return ids;
}

void writeSnapshot(const QDir &directory, const QString &name, const QByteArray &bytes, int age)
{
    QVERIFY(directory.mkpath("."));
    QFile file(directory.filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
    QVERIFY(file.flush());
    QVERIFY(file.setFileTime(
        QDateTime::currentDateTime().addSecs(-age), QFileDevice::FileModificationTime));
}

/// The source with its timer in the test's hand.
class TickingSource : public CouchDBPackageSource
{
public:
    using CouchDBPackageSource::CouchDBPackageSource;

    int timerId = 0;
    void tick()
    {
        QTimerEvent event(timerId);
        timerEvent(&event);
    }

protected:
    void timerEvent(QTimerEvent *event) override
    {
        timerId = event->timerId();
        CouchDBPackageSource::timerEvent(event);
    }
};

} // namespace

class TestCouchDBPackageSource : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsTheView();
    void keepsTheSnapshotThroughFailures_data();
    void keepsTheSnapshotThroughFailures();
    void startsFromTheNewestSnapshot();
    void persistsUnderTheETag();
    void persistsNoUnsafeName_data();
    void persistsNoUnsafeName();
    void newPollOvertakesTheOld();
    void pollsEvery122Seconds();
    void tagsContentWhereAsked();
    void sendsNothingWithoutManager();
};

void TestCouchDBPackageSource::followsTheView()
{
    ScopedDataLocation data;
    Database database;
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QVERIFY(packages(source).isEmpty());

    QVERIFY(updates.wait());
    QCOMPARE(packages(source), QStringList{"a"});
    QVERIFY(!database.server.requests().first().headers.contains("if-none-match"));

    source.update();
    QTRY_COMPARE(database.server.requestCount(), 2);
    QCOMPARE(database.lastCondition(), QByteArray("\"one\""));

    database.body = view({"a", "b"});
    database.etag = "\"two\"";
    const auto before = source.getAccessor();
    source.update();
    QVERIFY(updates.wait());
    QCOMPARE(updates.count(), 2); // none for the 304
    QCOMPARE(packages(source), (QStringList{"a", "b"}));
    before->load();
    QCOMPARE(before->packageCount(), 1); // an older snapshot is left as it was
}

void TestCouchDBPackageSource::keepsTheSnapshotThroughFailures_data()
{
    const HttpTestAnswer whole = HttpTestAnswer::of(200, view({"x"}), "ETag: \"x\"\r\n");
    QTest::addColumn<HttpTestAnswer>("answer");
    QTest::addColumn<bool>("isLogged");

    QTest::newRow("not modified") << HttpTestAnswer::of(304) << false;
    QTest::newRow("no such database") << HttpTestAnswer::of(404, "{}") << false;
    QTest::newRow("not authorized") << HttpTestAnswer::of(401, "{}") << true;
    QTest::newRow("server error") << HttpTestAnswer::of(500, "oh") << true;
    QTest::newRow("half a response") << whole.cutAt(whole.bytes.size() - 5) << true;
}

void TestCouchDBPackageSource::keepsTheSnapshotThroughFailures()
{
    QFETCH(HttpTestAnswer, answer);
    QFETCH(bool, isLogged);
    ScopedDataLocation data;
    Database database;
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QVERIFY(updates.wait());

    if (isLogged)
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^code \\d+$"));
    database.server.setHandler([answer](const HttpTestRequest &) { return answer; });
    source.update();
    QTRY_VERIFY(source.children().isEmpty()); // the requests have ended

    QCOMPARE(updates.count(), 1);
    QCOMPARE(packages(source), QStringList{"a"});
}

void TestCouchDBPackageSource::startsFromTheNewestSnapshot()
{
    ScopedDataLocation data;
    Database database;
    database.etag = "\"newer\"";
    const QDir directory = database.persistDirectory(data);
    writeSnapshot(directory, "older", view({"old"}), 600);
    writeSnapshot(directory, "newer", view({"new"}), 300);
    writeSnapshot(directory, ".partial", view({"half"}), 0);

    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QCOMPARE(packages(source), QStringList{"new"});
    QTRY_COMPARE(database.server.requestCount(), 1);
    QCOMPARE(database.lastCondition(), QByteArray("\"newer\""));
    QCOMPARE(updates.count(), 0);
}

void TestCouchDBPackageSource::persistsUnderTheETag()
{
    ScopedDataLocation data;
    Database database;
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    const QDir directory = database.persistDirectory(data);
    source.persist(); // nothing to persist yet, but the directory
    QCOMPARE(directory.entryList(QDir::Files | QDir::Hidden), QStringList());

    QVERIFY(updates.wait());
    writeSnapshot(directory, ".partial", "what a crash has left", 0);
    source.persist();
    QCOMPARE(directory.entryList(QDir::Files | QDir::Hidden), QStringList{"one"});
    QFile file(directory.filePath("one"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), view({"a"}));

    writeSnapshot(directory, "one", view({"stays"}), 0);
    source.persist();
    CouchDBPackageSource restarted(database.url(), &manager);
    QCOMPARE(packages(restarted), QStringList{"stays"});
}

void TestCouchDBPackageSource::persistsNoUnsafeName_data()
{
    QTest::addColumn<QByteArray>("etag");

    QTest::newRow("none") << QByteArray();
    QTest::newRow("nothing between the quotes") << QByteArray("\"\"");
    QTest::newRow("weak") << QByteArray("W/\"682e-cg+u3f4P\"");
    QTest::newRow("leads out") << QByteArray("\"../../escaped\"");
    QTest::newRow("hidden") << QByteArray("\".lock\"");
    QTest::newRow("other separator") << QByteArray("\"..\\escaped\"");
}

void TestCouchDBPackageSource::persistsNoUnsafeName()
{
    QFETCH(QByteArray, etag);
    ScopedDataLocation data;
    Database database;
    database.etag = etag;
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QVERIFY(updates.wait());
    source.persist();
    QDirIterator files(data.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext())
        QVERIFY2(
            !files.next().contains("couchdb") && !files.filePath().contains("escaped"),
            qPrintable(files.filePath()));
    QCOMPARE(packages(source), QStringList{"a"});
}

void TestCouchDBPackageSource::newPollOvertakesTheOld()
{
    ScopedDataLocation data;
    Database database;
    database.server.setHandler([](const HttpTestRequest &) { return HttpTestAnswer::silence(); });
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(database.server.heldCount(), 1);

    database.server.setHandler(
        [](const HttpTestRequest &) { return HttpTestAnswer::ok(view({"second"})); });
    source.update();
    QVERIFY(updates.wait());
    database.server.answerHeld(HttpTestAnswer::ok(view({"first"})));
    QTRY_VERIFY(source.children().isEmpty());
    QCOMPARE(updates.count(), 1);
    QCOMPARE(packages(source), QStringList{"second"});
}

void TestCouchDBPackageSource::pollsEvery122Seconds()
{
    ScopedDataLocation data;
    Database database;
    QNetworkAccessManager manager;
    TickingSource source(database.url(), &manager);
    QTRY_COMPARE(database.server.requestCount(), 1);
    QTRY_VERIFY_WITH_TIMEOUT(source.timerId != 0, 30000); // the first tick of the real timer

    for (int tick = 2; tick <= 60; ++tick)
        source.tick();
    QTRY_VERIFY(source.children().isEmpty());
    QCOMPARE(database.server.requestCount(), 1);
    source.tick();
    QTRY_COMPARE(database.server.requestCount(), 2);
}

void TestCouchDBPackageSource::tagsContentWhereAsked()
{
    ScopedDataLocation data;
    Database database;
    database.etag.clear();
    QNetworkAccessManager manager;
    CouchDBPackageSource source(database.url(), &manager);
    QCOMPARE(source.contentTags(), false);
    source.setContentTags(true);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QVERIFY(updates.wait());

    source.update();
    QTRY_COMPARE(database.server.requestCount(), 2);
    QCOMPARE(database.lastCondition(), quotedSha256(view({"a"})));
    QTRY_VERIFY(source.children().isEmpty());
    QCOMPARE(updates.count(), 1); // the same bytes again

    source.persist();
    CouchDBPackageSource restarted(database.url(), nullptr);
    QCOMPARE(packages(restarted), QStringList{"a"});

    database.body = view({"b"});
    source.update();
    QVERIFY(updates.wait());
    QCOMPARE(packages(source), QStringList{"b"});

    source.setContentTags(false); // and without tags each answer is news
    source.update();
    QVERIFY(updates.wait());
    source.update();
    QVERIFY(updates.wait());
    QCOMPARE(database.lastCondition(), QByteArray());
}

void TestCouchDBPackageSource::sendsNothingWithoutManager()
{
    ScopedDataLocation data;
    Database database;
    auto manager = std::make_unique<QNetworkAccessManager>();
    CouchDBPackageSource source(database.url(), manager.get());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QVERIFY(updates.wait());
    QTRY_VERIFY(source.children().isEmpty());
    manager.reset();
    source.update();
    QVERIFY(source.children().isEmpty());
    QCOMPARE(packages(source), QStringList{"a"});
}

QTEST_GUILESS_MAIN(TestCouchDBPackageSource)
#include "tst_couchdbpackagesource.moc"

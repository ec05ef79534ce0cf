// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"
#include "sources/couchdbpackagesource.h"
#include "support/httptestserver.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"
#include <QCryptographicHash>
#include <QLockFile>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTimerEvent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

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

/// A database whose view the test sets: with the conditional answers of CouchDB 1.x, or without an
/// ETag and in chunks as CouchDB answers since 2.0.
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
        return etag.isEmpty() ? HttpTestAnswer::chunked(body, 10)
                              : HttpTestAnswer::of(200, body, "ETag: " + etag + "\r\n");
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
    writeFile(directory.filePath(name), bytes);
    QFile file(directory.filePath(name));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.setFileTime(
        QDateTime::currentDateTime().addSecs(-age), QFileDevice::FileModificationTime));
}

/// A source that has got its first view, and what it tells.
struct Started
{
    ScopedDataLocation data;
    Database database;
    std::unique_ptr<QNetworkAccessManager> manager = std::make_unique<QNetworkAccessManager>();
    CouchDBPackageSource source{database.url(), manager.get()};
    QSignalSpy updates{&source, &PackageSource::updateRequired};

    explicit Started(const QByteArray &etag = "\"one\"", bool contentTags = false)
    {
        database.etag = etag;
        source.setContentTags(contentTags);
        updates.wait(60000);
        QTest::qWaitFor([this] { return source.children().isEmpty(); }, 60000);
    }
};

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
    void keepsTheSnapshotThroughFailures();
    void startsFromTheNewestSnapshot();
    void persistsUnderTheETag();
    void persistsNoUnsafeName();
    void remembersWhichContentIsTheNewest();
    void leavesOutConditionsThatAreRefused();
    void boundsWhatItKeeps();
    void newPollOvertakesTheOld();
    void pollsEvery122Seconds();
    void tagsContentWhereAsked();
    void sendsNothingWithoutManager();
};

void TestCouchDBPackageSource::followsTheView()
{
    Started started;
    auto &[data, database, manager, source, updates] = started;
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

void TestCouchDBPackageSource::keepsTheSnapshotThroughFailures()
{
    const HttpTestAnswer whole = HttpTestAnswer::of(200, view({"x"}), "ETag: \"x\"\r\n");
    const QPair<HttpTestAnswer, QString> failures[] = {
        {HttpTestAnswer::of(304), {}},
        {HttpTestAnswer::of(404, "{}"), {}},
        {HttpTestAnswer::of(401, "{}"), "debug: code 401"},
        {HttpTestAnswer::of(500, "oh"), "debug: code 500"},
        {whole.cutAt(whole.bytes.size() - 5), "debug: code 0"},
    };
    Started started;
    for (const auto &[answer, line] : failures) {
        const HttpTestAnswer failure = answer;
        started.database.server.setHandler([failure](const HttpTestRequest &) { return failure; });
        for (const char *category : {"default", "norvak.request"}) {
            LogRecorder log(category);
            started.source.update();
            QTRY_VERIFY(started.source.children().isEmpty()); // the requests have ended
            QCOMPARE(log.lines().join('\n'), category == QString("default") ? line : QString());
        }
        QCOMPARE(started.updates.count(), 1);
        QCOMPARE(packages(started.source), QStringList{"a"});
    }
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
    Started started;
    const QDir directory = started.database.persistDirectory(started.data);
    writeSnapshot(directory, ".partial", "what a crash has left", 0);
    writeSnapshot(directory, ".partial.c81Fx0", "and before that", 0);
    started.source.persist();
    QCOMPARE(directory.entryList(QDir::Files | QDir::Hidden), QStringList{"one"});
    QCOMPARE(readFile(directory.filePath("one")), view({"a"}));

    writeSnapshot(directory, "one", view({"stays"}), 0);
    started.source.persist();
    QCOMPARE(readFile(directory.filePath("one")), view({"stays"}));
}

void TestCouchDBPackageSource::persistsNoUnsafeName()
{
    for (const char *etag :
         {"", "\"\"", "W/\"682e-cg+u3f4P\"", "\"../../escaped\"", "\".lock\"", "\"..\\escaped\""}) {
        Started started(etag);
        started.source.persist();
        const QStringList files = filesBelow(started.data.path());
        QVERIFY2(files.filter(QRegularExpression("couchdb|escaped")).isEmpty(), etag);
        QCOMPARE(packages(started.source), QStringList{"a"});
        started.source.update();
        QTRY_COMPARE(started.database.server.requestCount(), 2);
        QCOMPARE(started.database.lastCondition(), QByteArray(etag)); // all the same
    }
}

void TestCouchDBPackageSource::remembersWhichContentIsTheNewest()
{
    Started started({}, true);
    auto &[data, database, manager, source, updates] = started;
    source.persist();
    for (const QString name : {"b", "a"}) {
        database.body = view({name});
        source.update();
        QVERIFY(updates.wait());
        source.persist();
    }
    CouchDBPackageSource restarted(database.url(), nullptr);
    QCOMPARE(packages(restarted), QStringList{"a"});
}

void TestCouchDBPackageSource::leavesOutConditionsThatAreRefused()
{
    Started named('"' + QByteArray(1024, 'x') + '"');
    named.source.update();
    QTRY_COMPARE(named.database.server.requestCount(), 2);
    QCOMPARE(named.database.lastCondition(), QByteArray());

    Started started;
    started.database.server.setHandler([](const HttpTestRequest &request) {
        return request.headers.contains("if-none-match") ? HttpTestAnswer::of(431)
                                                         : HttpTestAnswer::ok(view({"b"}));
    });
    started.source.update();
    QTRY_VERIFY(started.source.children().isEmpty());
    QCOMPARE(started.updates.count(), 1);
    started.source.update();
    QVERIFY(started.updates.wait());
    QCOMPARE(packages(started.source), QStringList{"b"});
}

void TestCouchDBPackageSource::boundsWhatItKeeps()
{
    const QTemporaryDir temporary;
    const auto restore = qScopeGuard([old = qgetenv("TMPDIR")] { qputenv("TMPDIR", old); });
    qputenv("TMPDIR", QFile::encodeName(temporary.path()));
    const auto files = [&] { return filesBelow(temporary.path()).size(); };
    auto started = std::make_unique<Started>(QByteArray());
    auto &source = started->source;
    auto unread = source.getAccessor();
    for (int i = 0; i < 2; ++i) {
        started->database.body = view({"b", "c"});
        source.update();
        QVERIFY(started->updates.wait());
    }
    QCOMPARE(files(), 3);
    source.setKeepsSuperseded(false);
    QCOMPARE(files(), 2); // the current one, and the one that isn't read yet
    unread->load();
    QCOMPARE(unread->packageCount(), 1);
    QCOMPARE(files(), 1);

    source.setMaximumAnswerSize(started->database.body.size());
    started->database.body += ' ';
    source.update();
    QTRY_VERIFY(source.children().isEmpty());
    QCOMPARE(started->updates.count(), 3);
    QCOMPARE(files(), 1);

    unread = source.getAccessor();
    started.reset();
    unread->load();
    QCOMPARE(unread->packageCount(), 2);
    QCOMPARE(files(), 0);
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
    Started started({}, true);
    auto &[data, database, manager, source, updates] = started;
    source.update();
    QTRY_COMPARE(database.server.requestCount(), 2);
    QCOMPARE(database.lastCondition(), quotedSha256(view({"a"})));
    QTRY_VERIFY(source.children().isEmpty());
    QCOMPARE(updates.count(), 1);                // the same bytes again
    QCOMPARE(database.server.requestCount(), 2); // one for each poll

    source.setContentTags(false); // and without tags each answer is news
    source.update();
    QVERIFY(updates.wait());
    source.update();
    QVERIFY(updates.wait());
    QCOMPARE(database.lastCondition(), QByteArray());
}

void TestCouchDBPackageSource::sendsNothingWithoutManager()
{
    Started started(QByteArray{}); // each answer is news
    connect(&started.source, &PackageSource::updateRequired, this, [&] {
        started.manager.reset();
        started.source.update();
    });
    started.source.update();
    QVERIFY(started.updates.wait());
    QTRY_VERIFY(started.source.children().isEmpty());
    QCOMPARE(started.database.server.requestCount(), 2);
    QCOMPARE(packages(started.source), QStringList{"a"});
}

QTEST_GUILESS_MAIN(TestCouchDBPackageSource)
#include "tst_couchdbpackagesource.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"
#include "sources/ledgerstore.h"
#include "sources/packageserver.h"
#include "sources/pollbackoff.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <norvak/request.h>

#include <QThreadPool>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;
using namespace std::chrono_literals;

namespace {

/// A ledger that is known by its only language: that is there even if nobody vouches for the rest.
QByteArray ledgerOf(const QByteArray &language)
{
    return LedgerBuilder().addLanguage(language).build();
}

QString languageOf(PackageServer &source)
{
    const auto accessor = source.getAccessor();
    accessor->load();
    return accessor->languages().join(',');
}

/// A source that has got the ledger of one language, and what it tells.
struct Started
{
    LedgerServer server;
    PackageServer source{server.service()};
    QSignalSpy updates{&source, &PackageSource::updateRequired};

    explicit Started(const QByteArray &etag = "\"e1\"", const QByteArray &ledger = ledgerOf("de"))
    {
        server.publish(ledger, etag);
        updates.wait(60000);
    }
};

bool isPolling(PackageServer &source)
{
    return source.findChild<nk::Request *>();
}

void tick(PackageServer &source)
{
    QTimerEvent event(1);
    QCoreApplication::sendEvent(&source, &event);
}

} // namespace

class tst_PackageServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void waitsForTheService();
    void followsEtags();
    void etagsGoBackAsTheyCame();
    void answerWithoutEtag();
    void failuresKeepTheLedger();
    void onePollAtATime();
    void delaysDoubleUpToTheirLimitAndStartAnew();
    void ticksWaitForTheDeadline();
    void persistsAndStartsWithoutNetwork();
    void refusedLedgerStands();
    void nothingBehindThePointer();
    void goesInTheMiddleOfAPoll();

private:
    /// Polls once, as if the repository asked for it.
    void poll(PackageServer &source, LedgerServer &server);
    void poll(Started &started) { poll(started.source, started.server); }

    ScopedDataLocation m_data;
    QScopedPointer<LogRecorder> m_log;
};

void tst_PackageServer::init()
{
    m_log.reset(new LogRecorder("norvak.packageserver"));
}

void tst_PackageServer::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    m_log.reset();
    QVERIFY(QDir(m_data.filePath("packages/servers")).removeRecursively());
}

void tst_PackageServer::poll(PackageServer &source, LedgerServer &server)
{
    const int before = m_log->lines().size();
    const int requests = server.http().requestCount();
    source.update();
    QTRY_VERIFY(m_log->lines().size() > before);
    QCOMPARE(server.http().requestCount(), requests + 1);
}

void tst_PackageServer::waitsForTheService()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    QCOMPARE(languageOf(source), QString());
    // Enabled, but not available before the event loop's next turn.
    QCOMPARE(server.service()->status(), nk::account::Service::Connecting);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    tick(source);
    source.update();
    QVERIFY(!isPolling(source));
    QTRY_COMPARE(updates.count(), 1);
    QCOMPARE(server.http().requestCount(), 1);
    QCOMPARE(languageOf(source), QString("de"));
    // One that is available already is asked at once.
    PackageServer second(server.service());
    QSignalSpy secondUpdates(&second, &PackageSource::updateRequired);
    QTRY_COMPARE(secondUpdates.count(), 1);
}

void tst_PackageServer::followsEtags()
{
    Started started;
    auto &[server, source, updates] = started;
    const QString received =
        "debug: Package server update complete - Received new ledger with ETag ";
    QCOMPARE(m_log->lines(), QStringList({received + "\"\\\"e1\\\"\""}));
    const auto before = source.getAccessor();

    m_log->clear();
    poll(started);
    QCOMPARE(m_log->lines(), QStringList({"debug: Package server update complete - no changes"}));
    QCOMPARE(updates.count(), 1);

    server.publish(ledgerOf("fr"), "\"e2\"");
    poll(started);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(languageOf(source), QString("fr"));
    before->load(); // a snapshot of its time
    QCOMPARE(before->languages(), QStringList({"de"}));
    poll(started);
    QCOMPARE(
        server.conditions(), QVector<QByteArray>({QByteArray(), "\"e1\"", "\"e1\"", "\"e2\""}));
}

void tst_PackageServer::etagsGoBackAsTheyCame()
{
    for (const char *etag : {"W/\"65f0a-1b2c\"", "\"\"", "\"a,b\"", "\"\xe9\""}) {
        Started started(etag);
        poll(started);
        QCOMPARE(started.server.conditions().last(), QByteArray(etag));
        QCOMPARE(started.updates.count(), 1);
    }
    Started tooLong('"' + QByteArray(1024, 'x') + '"');
    poll(tooLong);
    QCOMPARE(tooLong.server.conditions().last(), QByteArray());
}

void tst_PackageServer::answerWithoutEtag()
{
    Started started(QByteArray{});
    poll(started);
    QCOMPARE(started.updates.count(), 2);
    QCOMPARE(started.server.conditions(), QVector<QByteArray>({QByteArray(), QByteArray()}));
    started.source.persist();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(!QFile::exists(m_data.filePath("packages/servers")));
}

void tst_PackageServer::failuresKeepTheLedger()
{
    const HttpTestAnswer good = HttpTestAnswer::ok(ledgerOf("fr"));
    struct Failure
    {
        HttpTestAnswer answer;
        QString told;
        QByteArray nextCondition = "\"e1\"";
    };
    const Failure failures[] = {
        {HttpTestAnswer::of(404, "gone"), "404 \"gone\""},
        {HttpTestAnswer::of(500, QByteArray(1025, 'x')), "500 \"" + QString(1024, 'x') + '"'},
        {HttpTestAnswer::of(204), "204 \"\""},
        {good.cutAt(good.bytes.indexOf("\r\n\r\n") + 8), "0 \"ldgr\""},
        {HttpTestAnswer::of(431), "431 \"\"", QByteArray()},
    };
    for (const auto &[answer, told, nextCondition] : failures) {
        Started started;
        started.server.answerWith(answer);
        m_log->clear();
        poll(started);
        QCOMPARE(
            m_log->lines(), QStringList({"critical: Ledger update failed with status " + told}));
        QCOMPARE(started.updates.count(), 1);
        QCOMPARE(languageOf(started.source), QString("de"));
        started.server.answerWith(std::nullopt);
        poll(started);
        QCOMPARE(started.server.conditions().last(), nextCondition);
    }
}

void tst_PackageServer::onePollAtATime()
{
    LedgerServer server;
    server.answerWith(HttpTestAnswer::silence());
    PackageServer source(server.service());
    QTRY_COMPARE(server.http().heldCount(), 1);
    source.update();
    tick(source);
    Q_EMIT server.service()->statusChanged();
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    server.http().answerHeld(HttpTestAnswer::ok(ledgerOf("de")));
    QTRY_COMPARE(updates.count(), 1);
    QCOMPARE(server.http().requestCount(), 1);
}

void tst_PackageServer::delaysDoubleUpToTheirLimitAndStartAnew()
{
    PollBackoff backoff;
    for (int round = 0; round < 2; ++round) {
        for (const auto delay : {5s, 10s, 20s, 40s, 80s, 160s, 320s, 320s})
            QCOMPARE(backoff.afterFailure().count(), delay.count());
        for (int i = 0; i < 100; ++i)
            QCOMPARE(backoff.afterFailure().count(), (320s).count());
        QCOMPARE(backoff.afterSuccess().count(), (120s).count());
    }
}

void tst_PackageServer::ticksWaitForTheDeadline()
{
    LedgerServer server;
    server.answerWith(HttpTestAnswer::of(503));
    PackageServer source(server.service());
    QTRY_COMPARE(m_log->lines("critical").size(), 1);
    QTRY_VERIFY(!isPolling(source));
    tick(source); // the next poll is due in 5 seconds at the earliest
    QVERIFY(!isPolling(source));
    server.answerWith(std::nullopt);
    server.publish(ledgerOf("de"), "\"e1\"");
    poll(source, server); // the repository doesn't wait
    QTRY_VERIFY(!isPolling(source));
    tick(source);
    QVERIFY(!isPolling(source));
    // What the service's own word doesn't start, a tick does.
    LedgerServer quiet;
    quiet.publish(ledgerOf("de"), "\"e1\"");
    PackageServer second(quiet.service());
    quiet.service()->blockSignals(true);
    QTRY_COMPARE(quiet.service()->status(), nk::account::Service::Available);
    QCOMPARE(quiet.http().requestCount(), 0);
    QSignalSpy updates(&second, &PackageSource::updateRequired);
    tick(second);
    QTRY_COMPARE(updates.count(), 1);
}

void tst_PackageServer::persistsAndStartsWithoutNetwork()
{
    Started().source.persist(); // the write goes on without its source
    QThreadPool::globalInstance()->waitForDone();

    LedgerServer gone;
    gone.http().close();
    m_log->clear();
    PackageServer source(gone.service());
    QCOMPARE(
        m_log->lines(),
        QStringList({"debug: Loaded persisted ledger of \"service-1\" ETag \"\\\"e1\\\"\""}));
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QCOMPARE(languageOf(source), QString("de"));
    QTRY_COMPARE(m_log->lines("critical").size(), 1);
    QCOMPARE(languageOf(source), QString("de"));
    QCOMPARE(updates.count(), 0);

    // And with network again: the ledger is confirmed, without news.
    LedgerServer back;
    back.publish(ledgerOf("de"), "\"e1\"");
    PackageServer online(back.service());
    QSignalSpy onlineUpdates(&online, &PackageSource::updateRequired);
    QTRY_VERIFY(m_log->lines().contains("debug: Package server update complete - no changes"));
    QCOMPARE(back.conditions(), QVector<QByteArray>({"\"e1\""}));
    QCOMPARE(onlineUpdates.count(), 0);
}

void tst_PackageServer::refusedLedgerStands()
{
    Started started("\"e1\"", "not a ledger");
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("Invalid or corrupted ledger data"));
    QTest::ignoreMessage(QtCriticalMsg, "Parsing of package ledger failed");
    QCOMPARE(languageOf(started.source), QString());
    started.source.persist();
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(LedgerStore("service-1").load().ledger, QByteArray("not a ledger"));
    // It isn't fetched again before the server has another.
    poll(started);
    QCOMPARE(started.updates.count(), 1);
    started.server.publish(ledgerOf("de"), "\"e2\"");
    poll(started);
    QCOMPARE(started.updates.count(), 2);
    QCOMPARE(languageOf(started.source), QString("de"));
}

void tst_PackageServer::nothingBehindThePointer()
{
    PackageServer none(nullptr);
    none.update();
    none.persist();
    tick(none);
    QCOMPARE(languageOf(none), QString());

    Started started;
    started.server.removeManager();
    started.source.update();
    QTRY_COMPARE(m_log->lines("critical").size(), 1);
    started.server.removeService();
    started.source.update();
    started.source.persist();
    tick(started.source);
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(languageOf(started.source), QString("de"));
    QCOMPARE(started.server.http().requestCount(), 1);
    QVERIFY(!QFile::exists(m_data.filePath("packages/servers")));
}

void tst_PackageServer::goesInTheMiddleOfAPoll()
{
    LedgerServer server;
    server.answerWith(HttpTestAnswer::silence());
    QScopedPointer<PackageServer> source(new PackageServer(server.service()));
    QTRY_COMPARE(server.http().heldCount(), 1);
    source.reset();
    QTRY_COMPARE(server.http().heldCount(), 0); // the connection was closed

    // The service may go as well; the answer still counts.
    LedgerServer other;
    other.answerWith(HttpTestAnswer::silence());
    source.reset(new PackageServer(other.service()));
    QTRY_COMPARE(other.http().heldCount(), 1);
    other.removeService();
    other.http().answerHeld(HttpTestAnswer::ok(ledgerOf("de")));
    QTRY_COMPARE(languageOf(*source), QString("de"));
    // And the manager, which takes the exchange with it.
    LedgerServer third;
    third.answerWith(HttpTestAnswer::silence());
    source.reset(new PackageServer(third.service()));
    QTRY_COMPARE(third.http().heldCount(), 1);
    m_log->clear();
    third.removeManager();
    QTRY_COMPARE(
        m_log->lines("critical"), QStringList({"Ledger update failed with status 0 \"\""}));
}

QTEST_GUILESS_MAIN(tst_PackageServer)
#include "tst_packageserver.moc"

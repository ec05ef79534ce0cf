// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"
#include "sources/ledgerstore.h"
#include "sources/packageserver.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QThreadPool>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

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
    void firstStart();
    void waitsForTheService();
    void followsEtags();
    void etagsGoBackAsTheyCame_data();
    void etagsGoBackAsTheyCame();
    void answerWithoutEtag();
    void failuresKeepTheLedger_data();
    void failuresKeepTheLedger();
    void onePollAtATime();
    void ticksWaitForTheDeadline();
    void persistsAndStartsWithoutNetwork();
    void persistsOnce();
    void refusedLedgerStands();
    void nothingBehindThePointer();
    void goesInTheMiddleOfAPoll();
    void goesByItsOwnNews();

private:
    /// Polls once, as if the repository asked for it.
    void poll(PackageServer &source, LedgerServer &server);

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

void tst_PackageServer::firstStart()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    QCOMPARE(source.priority(), 0);
    QCOMPARE(languageOf(source), QString());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    QCOMPARE(server.conditions(), QVector<QByteArray>({QByteArray()}));
    QCOMPARE(languageOf(source), QString("de"));
    QCOMPARE(
        m_log->lines(),
        QStringList({"debug: Package server update complete - Received new ledger with ETag "
                     "\"\\\"e1\\\"\""}));
}

void tst_PackageServer::waitsForTheService()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    // Enabled, but not available before the event loop's next turn.
    QCOMPARE(server.service()->status(), nk::account::Service::Connecting);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    tick(source);
    source.update();
    QSignalSpy status(server.service(), &nk::account::Service::statusChanged);
    QCOMPARE(server.http().requestCount(), 0);
    QTRY_COMPARE(updates.count(), 1);
    QCOMPARE(status.count(), 1);
    QCOMPARE(server.http().requestCount(), 1);
    // One that is available already is asked at once.
    PackageServer second(server.service());
    QSignalSpy secondUpdates(&second, &PackageSource::updateRequired);
    QTRY_COMPARE(secondUpdates.count(), 1);
}

void tst_PackageServer::followsEtags()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    const auto before = source.getAccessor();

    m_log->clear();
    poll(source, server);
    QCOMPARE(m_log->lines(), QStringList({"debug: Package server update complete - no changes"}));
    QCOMPARE(updates.count(), 1);

    server.publish(ledgerOf("fr"), "\"e2\"");
    poll(source, server);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(languageOf(source), QString("fr"));
    before->load(); // a snapshot of its time
    QCOMPARE(before->languages(), QStringList({"de"}));
    poll(source, server);
    QCOMPARE(
        server.conditions(), QVector<QByteArray>({QByteArray(), "\"e1\"", "\"e1\"", "\"e2\""}));
}

void tst_PackageServer::etagsGoBackAsTheyCame_data()
{
    QTest::addColumn<QByteArray>("etag");
    QTest::newRow("strong") << QByteArray("\"65f0a-1b2c\"");
    QTest::newRow("weak") << QByteArray("W/\"65f0a-1b2c\"");
    QTest::newRow("empty") << QByteArray("\"\"");
    QTest::newRow("with a comma") << QByteArray("\"a,b\"");
    QTest::newRow("beyond ASCII") << QByteArray("\"\xe9\"");
}

void tst_PackageServer::etagsGoBackAsTheyCame()
{
    QFETCH(QByteArray, etag);
    LedgerServer server;
    server.publish(ledgerOf("de"), etag);
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    poll(source, server);
    QCOMPARE(server.conditions().last(), etag);
    QCOMPARE(updates.count(), 1);
}

void tst_PackageServer::answerWithoutEtag()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), QByteArray());
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    poll(source, server);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(server.conditions(), QVector<QByteArray>({QByteArray(), QByteArray()}));
    source.persist();
    QThreadPool::globalInstance()->waitForDone();
    QVERIFY(!QFile::exists(m_data.filePath("packages/servers")));
}

void tst_PackageServer::failuresKeepTheLedger_data()
{
    QTest::addColumn<HttpTestAnswer>("answer");
    QTest::addColumn<QString>("line");
    const HttpTestAnswer good = HttpTestAnswer::ok(ledgerOf("fr"));
    QTest::newRow("not found") << HttpTestAnswer::of(404, "gone")
                               << "Ledger update failed with status 404 \"gone\"";
    QTest::newRow("in trouble") << HttpTestAnswer::of(503)
                                << "Ledger update failed with status 503 \"\"";
    QTest::newRow("no content") << HttpTestAnswer::of(204)
                                << "Ledger update failed with status 204 \"\"";
    QTest::newRow("cut") << good.cutAt(good.bytes.indexOf("\r\n\r\n") + 8)
                         << "Ledger update failed with status 0 \"ldgr\"";
}

void tst_PackageServer::failuresKeepTheLedger()
{
    QFETCH(HttpTestAnswer, answer);
    QFETCH(QString, line);
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    server.answerWith(answer);
    m_log->clear();
    poll(source, server);
    QCOMPARE(m_log->lines(), QStringList({"critical: " + line}));
    QCOMPARE(updates.count(), 1);
    QCOMPARE(languageOf(source), QString("de"));
    server.answerWith(std::nullopt);
    poll(source, server);
    QCOMPARE(server.conditions().last(), QByteArray("\"e1\""));
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

void tst_PackageServer::ticksWaitForTheDeadline()
{
    LedgerServer server;
    server.answerWith(HttpTestAnswer::of(503));
    PackageServer source(server.service());
    QTRY_COMPARE(m_log->lines("critical").size(), 1);
    // The next poll is due in 5 seconds at the earliest.
    tick(source);
    QCoreApplication::processEvents();
    QCOMPARE(server.http().requestCount(), 1);
    server.answerWith(std::nullopt);
    server.publish(ledgerOf("de"), "\"e1\"");
    poll(source, server); // the repository doesn't wait
    tick(source);
    QCoreApplication::processEvents();
    QCOMPARE(server.http().requestCount(), 2);
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
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    {
        PackageServer source(server.service());
        QSignalSpy updates(&source, &PackageSource::updateRequired);
        QTRY_COMPARE(updates.count(), 1);
        source.persist();
    } // the write goes on without its source
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

void tst_PackageServer::persistsOnce()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    source.persist(); // nothing yet
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    source.persist();
    source.persist();
    QThreadPool::globalInstance()->waitForDone();
    const QString skipping =
        "debug: Skipping ledger persistence for \"service-1\" - already persisted";
    QCOMPARE(m_log->lines().count(skipping), 1);
    server.removeService();
    m_log->clear();
    source.persist();
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(m_log->lines(), QStringList());
}

void tst_PackageServer::refusedLedgerStands()
{
    LedgerServer server;
    server.publish("not a ledger", "\"e1\"");
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    const auto accessor = source.getAccessor();
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("Invalid or corrupted ledger data"));
    QTest::ignoreMessage(QtCriticalMsg, "Parsing of package ledger failed");
    accessor->load();
    QCOMPARE(accessor->packageCount(), 0);
    source.persist();
    QThreadPool::globalInstance()->waitForDone();
    QCOMPARE(LedgerStore("service-1").load().ledger, QByteArray("not a ledger"));
    // It isn't fetched again before the server has another.
    poll(source, server);
    QCOMPARE(updates.count(), 1);
    server.publish(ledgerOf("de"), "\"e2\"");
    poll(source, server);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(languageOf(source), QString("de"));
}

void tst_PackageServer::nothingBehindThePointer()
{
    PackageServer none(nullptr);
    none.update();
    none.persist();
    tick(none);
    QCOMPARE(languageOf(none), QString());

    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    PackageServer source(server.service());
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE(updates.count(), 1);
    server.removeManager();
    source.update();
    QTRY_COMPARE(m_log->lines("critical").size(), 1);
    QCOMPARE(languageOf(source), QString("de"));
    server.removeService();
    source.update();
    tick(source);
    QCOMPARE(languageOf(source), QString("de"));
    QCOMPARE(server.http().requestCount(), 1);
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

void tst_PackageServer::goesByItsOwnNews()
{
    LedgerServer server;
    server.publish(ledgerOf("de"), "\"e1\"");
    auto *source = new PackageServer(server.service());
    QPointer<PackageServer> alive(source);
    connect(source, &PackageSource::updateRequired, this, [source] { delete source; });
    QTRY_VERIFY(!alive);
}

QTEST_GUILESS_MAIN(tst_PackageServer)
#include "tst_packageserver.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/nginxserver.h"

#include <norvak/request.h>

#include <QBuffer>
#include <QCryptographicHash>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>
#include <QtTest>

using namespace nk;
using namespace nk::pm::test;

namespace {

QByteArray compressible(int size)
{
    QByteArray bytes;
    for (int i = 0; bytes.size() < size; ++i)
        bytes += "line " + QByteArray::number(i) + "\n";
    bytes.truncate(size);
    return bytes;
}

} // namespace

/// Request against a real server.
class tst_RequestNginx : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void bytesAreTheServersOwn_data();
    void bytesAreTheServersOwn();
    void statuses_data();
    void statuses();
    void conditionalRequestsGet304();
    void partsOfAFile();
    void strangersAuthorityIsRefused();
    void neverFromTlsToPlain();
    void connectionsAreReused();
    void fileThatShrinksUnderTheServer();
    void serverThatDies();

private:
    QNetworkRequest request(const QUrl &url) const
    {
        QNetworkRequest result(url);
        if (url.scheme() == "https")
            result.setSslConfiguration(m_server->trust());
        return result;
    }
    static int run(
        const QNetworkRequest &what, QNetworkAccessManager *manager, QIODevice *sink = nullptr)
    {
        int code = -1;
        auto *running = new GetRequest(what, manager);
        running->setSuppressErrors(true);
        running->setDataSink(sink);
        connect(running, &Request::finished, running, [&] { code = running->responseCode(); });
        QSignalSpy spy(running, &Request::finished);
        return spy.wait(120000) ? code : -1;
    }

    std::unique_ptr<NginxServer> m_server;
    QNetworkAccessManager m_manager;
    const QByteArray m_small = compressible(5000);
    const QByteArray m_large = compressible(20 * 1024 * 1024);
};

void tst_RequestNginx::initTestCase()
{
    if (!NginxServer::isInstalled())
        QSKIP("nginx and openssl are needed");
    m_server = std::make_unique<NginxServer>();
    m_server->addFile("small", m_small);
    m_server->addFile("large", m_large);
    m_server->addFile("empty", {});
}

void tst_RequestNginx::bytesAreTheServersOwn_data()
{
    QTest::addColumn<QUrl>("url");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain") << m_server->url("/small") << m_small;
    QTest::newRow("empty") << m_server->url("/empty") << QByteArray();
    QTest::newRow("large") << m_server->url("/large") << m_large;
    QTest::newRow("large, closing") << m_server->url("/closing/large") << m_large;
    QTest::newRow("gzip offered") << m_server->url("/gzip/small") << m_small;
    QTest::newRow("moved") << m_server->url("/moved/small") << m_small;
    QTest::newRow("moved to TLS") << m_server->url("/tls-moved/small") << m_small;
    QTest::newRow("TLS") << m_server->tlsUrl("/small") << m_small;
    QTest::newRow("TLS, large") << m_server->tlsUrl("/large") << m_large;
    QTest::newRow("TLS, large, closing") << m_server->tlsUrl("/closing/large") << m_large;
}

void tst_RequestNginx::bytesAreTheServersOwn()
{
    QFETCH(QUrl, url);
    QFETCH(QByteArray, bytes);
    QNetworkRequest what = request(url);
    what.setSslConfiguration(m_server->trust()); // for where it may be sent on to
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    QCOMPARE(run(what, &m_manager, &sink), 200);
    QVERIFY(sink.data() == bytes);
}

void tst_RequestNginx::statuses_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("code");
    QTest::newRow("busy") << "/busy/" << 503;
    QTest::newRow("missing") << "/missing" << 404;
    QTest::newRow("moved to nothing") << "/moved/missing" << 404;
}

void tst_RequestNginx::statuses()
{
    QFETCH(QString, path);
    for (const QUrl &url : {m_server->url(path), m_server->tlsUrl(path)}) {
        QNetworkRequest what(url);
        what.setSslConfiguration(m_server->trust());
        QTEST(run(what, &m_manager), "code");
    }
}

void tst_RequestNginx::conditionalRequestsGet304()
{
    auto *first = new GetRequest(request(m_server->url("/small")), &m_manager);
    QByteArray etag;
    connect(first, &Request::finished, first, [&] { etag = first->reply()->rawHeader("ETag"); });
    QVERIFY(QSignalSpy(first, &Request::finished).wait(60000));
    QVERIFY(etag.startsWith('"'));
    QNetworkRequest again = request(m_server->url("/small"));
    again.setRawHeader("If-None-Match", etag);
    QCOMPARE(run(again, &m_manager), 304);
}

void tst_RequestNginx::partsOfAFile()
{
    QNetworkRequest what = request(m_server->url("/large"));
    what.setRawHeader("Range", "bytes=1000000-1000999");
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    QCOMPARE(run(what, &m_manager, &sink), 206);
    QCOMPARE(sink.data(), m_large.mid(1000000, 1000));
    what.setRawHeader("Range", "bytes=900000000-");
    QCOMPARE(run(what, &m_manager), 416);
}

void tst_RequestNginx::strangersAuthorityIsRefused()
{
    QNetworkAccessManager fresh;
    QNetworkRequest what(m_server->tlsUrl("/small"));
    QCOMPARE(run(what, &fresh), 0);
}

void tst_RequestNginx::neverFromTlsToPlain()
{
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    QCOMPARE(run(request(m_server->tlsUrl("/plain-moved/small")), &m_manager, &sink), 0);
    QCOMPARE(sink.data(), QByteArray());
}

void tst_RequestNginx::connectionsAreReused()
{
    QNetworkAccessManager fresh;
    for (int i = 0; i < 20; ++i)
        QCOMPARE(run(request(m_server->url("/small")), &fresh), 200);
    QCOMPARE(m_server->connectionsOfLast(20), 1);
}

void tst_RequestNginx::fileThatShrinksUnderTheServer()
{
    m_server->addFile("shrinking", m_large);
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    auto *running = new GetRequest(request(m_server->url("/slow/shrinking")), &m_manager);
    running->setSuppressErrors(true);
    running->setDataSink(&sink);
    int code = -1;
    connect(running, &Request::finished, this, [&] { code = running->responseCode(); });
    QTRY_VERIFY_WITH_TIMEOUT(sink.size() > 0, 60000);
    QVERIFY(QFile::resize(m_server->root() + "/shrinking", 100));
    QTRY_VERIFY_WITH_TIMEOUT(code >= 0, 60000);
    QCOMPARE(code, 0);
    QVERIFY(sink.size() < m_large.size());
}

void tst_RequestNginx::serverThatDies()
{
    NginxServer mortal;
    mortal.addFile("large", m_large);
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    auto *running = new GetRequest(request(mortal.url("/slow/large")), &m_manager);
    running->setSuppressErrors(true);
    running->setDataSink(&sink);
    int code = -1;
    connect(running, &Request::finished, this, [&] { code = running->responseCode(); });
    QTRY_VERIFY_WITH_TIMEOUT(sink.size() > 0, 60000);
    mortal.kill();
    QTRY_VERIFY_WITH_TIMEOUT(code >= 0, 60000);
    QCOMPARE(code, 0);
    QCOMPARE(run(request(mortal.url("/large")), &m_manager), 0); // refused
}

QTEST_GUILESS_MAIN(tst_RequestNginx)

#include "tst_requestnginx.moc"

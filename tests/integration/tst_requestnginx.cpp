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
    void largeFiles();
    void trustIsKept();
    void partsOfAFile();
    void connectionsAreReused();
    void serverEndsInTheMiddle();

private:
    static int run(const QUrl &url, QNetworkAccessManager *manager, QIODevice *sink = nullptr)
    {
        return run(QNetworkRequest(url), manager, sink);
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
    const QSslConfiguration m_usual = QSslConfiguration::defaultConfiguration();
    const QByteArray m_large = compressible(20 * 1024 * 1024);
};

void tst_RequestNginx::initTestCase()
{
    if (!NginxServer::isInstalled())
        QSKIP("nginx and openssl are needed");
    m_server = std::make_unique<NginxServer>();
    m_server->addFile("small", "small");
    m_server->addFile("large", m_large);
    QSslConfiguration::setDefaultConfiguration(m_server->trust());
}

void tst_RequestNginx::largeFiles()
{
    for (const QUrl &url :
         {m_server->url("/large"), m_server->url("/closing/large"), m_server->url("/gzip/large"),
          m_server->tlsUrl("/large"), m_server->tlsUrl("/closing/large")}) {
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        QCOMPARE(run(url, &m_manager, &sink), 200);
        QVERIFY2(sink.data() == m_large, qPrintable(url.toString()));
    }
}

void tst_RequestNginx::partsOfAFile()
{
    QNetworkRequest what(m_server->url("/large"));
    what.setRawHeader("Range", "bytes=1000000-1000999");
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    QCOMPARE(run(what, &m_manager, &sink), 206);
    QCOMPARE(sink.data(), m_large.mid(1000000, 1000));
    what.setRawHeader("Range", "bytes=900000000-");
    QCOMPARE(run(what, &m_manager), 416);
}

void tst_RequestNginx::trustIsKept()
{
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    QCOMPARE(run(m_server->tlsUrl("/plain-moved/small"), &m_manager, &sink), 0);
    QCOMPARE(run(m_server->tlsUrl("/small"), &m_manager, &sink), 200);
    QCOMPARE(sink.data(), QByteArray("small"));
    // An authority that nobody named.
    QNetworkAccessManager fresh;
    QNetworkRequest strange(m_server->tlsUrl("/small"));
    strange.setSslConfiguration(m_usual);
    QCOMPARE(run(strange, &fresh), 0);
}

void tst_RequestNginx::connectionsAreReused()
{
    QNetworkAccessManager fresh;
    for (int i = 0; i < 20; ++i)
        QCOMPARE(run(m_server->url("/small"), &fresh), 200);
    QCOMPARE(m_server->connectionsOfLast(20), 1);
}

void tst_RequestNginx::serverEndsInTheMiddle()
{
    NginxServer mortal;
    const QString path = mortal.root() + "/large";
    for (const bool dies : {false, true}) {
        mortal.addFile("large", m_large);
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        auto *running = new GetRequest(QNetworkRequest(mortal.url("/slow/large")), &m_manager);
        running->setSuppressErrors(true);
        running->setDataSink(&sink);
        int code = -1;
        connect(running, &Request::finished, this, [&] { code = running->responseCode(); });
        QTRY_VERIFY_WITH_TIMEOUT(sink.size() > 0, 60000);
        if (dies)
            mortal.kill();
        else
            QVERIFY(QFile::resize(path, 100)); // shorter than it said
        QTRY_VERIFY_WITH_TIMEOUT(code >= 0, 60000);
        QCOMPARE(code, 0);
        QVERIFY(sink.size() < m_large.size());
    }
    QCOMPARE(run(mortal.url("/large"), &m_manager), 0); // refused
}

QTEST_GUILESS_MAIN(tst_RequestNginx)

#include "tst_requestnginx.moc"

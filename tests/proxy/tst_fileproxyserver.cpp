// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/fileproxyserver.h"
#include "proxy/ifileproxy.h"
#include "support/rawclient.h"
#include "support/testfiles.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <functional>

using nk::pm::FileProxyServer;
using nk::pm::IFileProxy;
using nk::pm::test::RawClient;

namespace {

/// Keeps what it is asked for, and answers with a function if it has one.
class Proxy : public IFileProxy
{
public:
    void requestFile(const QUrl &url) override
    {
        requests.append(url);
        if (answer)
            answer(url);
    }

    QVector<QUrl> requests;
    std::function<void(const QUrl &)> answer;
};

QByteArray get(const QByteArray &target)
{
    return "GET " + target + " HTTP/1.1\r\n\r\n";
}

QByteArray get(const QUrl &url)
{
    return get(url.path(QUrl::FullyEncoded).toLatin1());
}

} // namespace

class TestFileProxyServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void oneServerForAllHolders();
    void tokens();
    void proxyUrl_data();
    void proxyUrl();
    void unknownTargets_data();
    void unknownTargets();
    void relativeUrlReachesTheProxy_data();
    void relativeUrlReachesTheProxy();
    void proxiesAreSeparate();
    void oneAnswerServesAllWhoWait();
    void targetsAreComparedAsText_data();
    void targetsAreComparedAsText();
    void answerAfterTheClientLeft();
    void removedProxy();
    void clientThatLeavesWhileAllAreAnswered();
    void lastHolderLetsGoInsideARequest();
    void lastHolderLetsGoOnAnotherThread();
    void connectionsLeaveNothingBehind();

private:
    QTemporaryDir m_directory;
    QString m_file;
};

void TestFileProxyServer::init()
{
    m_file = m_directory.filePath("file");
    nk::pm::test::writeFile(m_file, "content\n");
}

void TestFileProxyServer::oneServerForAllHolders()
{
    QPointer<FileProxyServer> first;
    {
        const auto holder = FileProxyServer::instance();
        first = holder.data();
        QCOMPARE(FileProxyServer::instance(), holder);
        QVERIFY(first->isListening());
        QCOMPARE(first->serverAddress(), QHostAddress(QHostAddress::LocalHost));
        QCOMPARE(first->parent(), nullptr);
    }
    QVERIFY(!first);
    const auto second = FileProxyServer::instance();
    QVERIFY(second->isListening());
}

void TestFileProxyServer::tokens()
{
    FileProxyServer server;
    QSet<QString> tokens;
    for (int i = 0; i < 1000; ++i)
        tokens.insert(server.addProxy(nullptr));
    QCOMPARE(tokens.size(), 1000);
    const QRegularExpression form("\\A[A-Za-z0-9_-]{11}\\z");
    for (const QString &token : std::as_const(tokens))
        QVERIFY2(form.match(token).hasMatch(), qPrintable(token));
}

void TestFileProxyServer::proxyUrl_data()
{
    QTest::addColumn<QUrl>("relative");
    QTest::addColumn<QString>("path");
    QTest::newRow("plain") << QUrl("id/a.png") << "id/a.png";
    QTest::newRow("blank") << QUrl("id/a b.png") << "id/a%20b.png";
    QTest::newRow("umlaut") << QUrl(QString::fromUtf8("id/\u00e4")) << "id/%C3%A4";
    QTest::newRow("template marks") << QUrl("id/%251%252") << "id/%251%252";
    QTest::newRow("query") << QUrl("id/a?b") << "id/a?b";
    QTest::newRow("nothing") << QUrl() << "";
}

void TestFileProxyServer::proxyUrl()
{
    QFETCH(QUrl, relative);
    QFETCH(QString, path);
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    const QUrl url = server.proxyUrl(token, relative);
    QCOMPARE(
        url.toString(QUrl::FullyEncoded),
        QString("http://localhost:%1/%2/").arg(server.serverPort()).arg(token) + path);
    server.removeProxy(token);
    QCOMPARE(server.proxyUrl(token, relative), QUrl());
}

void TestFileProxyServer::unknownTargets_data()
{
    QTest::addColumn<QByteArray>("target");
    QTest::newRow("root") << QByteArray("/");
    QTest::newRow("slashes") << QByteArray("///");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("unknown token") << QByteArray("/AAAAAAAAAAA/id/file");
    QTest::newRow("not a url") << QByteArray("http://[::");
    QTest::newRow("null proxy") << QByteArray("/%1/id/file");
}

void TestFileProxyServer::unknownTargets()
{
    QFETCH(QByteArray, target);
    FileProxyServer server;
    target.replace("%1", server.addProxy(nullptr).toLatin1());
    RawClient client(server.serverPort());
    client.send(get(target));
    QTRY_VERIFY(client.received().endsWith("\r\n\r\nNot Found"));
    QVERIFY(client.received().startsWith("HTTP/1.1 404 Not Found\r\n"));
}

void TestFileProxyServer::relativeUrlReachesTheProxy_data()
{
    QTest::addColumn<QByteArray>("target"); // behind the token
    QTest::addColumn<QUrl>("url");
    QTest::newRow("plain") << QByteArray("/id/a.png") << QUrl("id/a.png");
    QTest::newRow("nothing") << QByteArray("") << QUrl();
    QTest::newRow("doubled slashes") << QByteArray("//id///a.png") << QUrl("id/a.png");
    QTest::newRow("encoded") << QByteArray("/id/%C3%A4%20b")
                             << QUrl(QString::fromUtf8("id/\u00e4 b"));
    QTest::newRow("encoded slash separates") << QByteArray("/id%2Fa") << QUrl("id/a");
    QTest::newRow("encoded question mark") << QByteArray("/id/a%3Fb") << QUrl("id/a?b");
    QTest::newRow("query is dropped") << QByteArray("/id/a?b") << QUrl("id/a");
    QTest::newRow("dots are left to the proxy") << QByteArray("/id/../../a") << QUrl("id/../../a");
}

void TestFileProxyServer::relativeUrlReachesTheProxy()
{
    QFETCH(QByteArray, target);
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    RawClient client(server.serverPort());
    client.send(get("/" + token.toLatin1() + target));
    QTRY_COMPARE(proxy.requests.size(), 1);
    QTEST(proxy.requests.first(), "url");
}

void TestFileProxyServer::proxiesAreSeparate()
{
    FileProxyServer server;
    Proxy first, second;
    const QString firstToken = server.addProxy(&first);
    const QString secondToken = server.addProxy(&second);
    RawClient client(server.serverPort());
    client.send(get(server.proxyUrl(secondToken, QUrl("id/file"))));
    QTRY_COMPARE(second.requests.size(), 1);
    QVERIFY(first.requests.isEmpty());

    server.respond(firstToken, QUrl("id/file"), 404, QString());
    server.respond(secondToken, QUrl("id/file"), 200, m_file);
    QTRY_VERIFY(client.received().endsWith("content\n"));
    QVERIFY(client.received().startsWith("HTTP/1.1 200 OK\r\n"));
}

void TestFileProxyServer::oneAnswerServesAllWhoWait()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    RawClient first(server.serverPort()), second(server.serverPort()), other(server.serverPort());
    first.send(get(server.proxyUrl(token, QUrl("id/file"))));
    second.send(get(server.proxyUrl(token, QUrl("id/file"))));
    other.send(get(server.proxyUrl(token, QUrl("id/other"))));
    QTRY_COMPARE(proxy.requests.size(), 3);

    server.respond(token, QUrl("id/file"), 200, m_file);
    QTRY_VERIFY(first.received().endsWith("content\n"));
    QTRY_COMPARE(second.received(), first.received());
    QVERIFY(other.received().isEmpty());
}

void TestFileProxyServer::targetsAreComparedAsText_data()
{
    QTest::addColumn<QByteArray>("target"); // behind the token
    QTest::addColumn<bool>("answered");
    QTest::newRow("plain") << QByteArray("/id/file") << true;
    QTest::newRow("raw utf-8") << QByteArray("/id/\xc3\xa4")
                               << false; // reaches the proxy as Latin-1
    QTest::newRow("per cent sign") << QByteArray("/id/50%25") << true;
    QTest::newRow("doubled slash") << QByteArray("//id/file") << false;
    QTest::newRow("encoded letter") << QByteArray("/id/%66ile") << false;
    QTest::newRow("encoded blank") << QByteArray("/id/a%20b") << false;
    QTest::newRow("raw blank") << QByteArray("/id/a b") << true;
    QTest::newRow("query") << QByteArray("/id/file?x") << false;
}

void TestFileProxyServer::targetsAreComparedAsText()
{
    QFETCH(QByteArray, target);
    QFETCH(bool, answered);
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    proxy.answer = [&](const QUrl &url) { server.respond(token, url, 200, m_file); };
    RawClient client(server.serverPort());
    client.send(get("/" + token.toLatin1() + target));
    QTRY_COMPARE(proxy.requests.size(), 1);
    // Asked once more, a connection that was answered is ready, and one that waits refuses.
    client.send(get(server.proxyUrl(token, QUrl("id/file"))));
    QTRY_VERIFY(client.isClosed() || client.received().count("content\n") == 2);
    QCOMPARE(client.received().count("HTTP/1.1 200 OK\r\n"), answered ? 2 : 0);
    QCOMPARE(client.received().count("HTTP/1.1 400 Bad Request\r\n"), answered ? 0 : 1);
}

void TestFileProxyServer::answerAfterTheClientLeft()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    RawClient client(server.serverPort());
    client.send(get(server.proxyUrl(token, QUrl("id/file"))));
    QTRY_COMPARE(proxy.requests.size(), 1);
    client.abort();
    server.respond(token, QUrl("id/file"), 200, m_file); // before the server has noticed
    QTRY_COMPARE(server.findChildren<QTcpSocket *>().size(), 0);
    server.respond(token, QUrl("id/file"), 200, m_file);
}

void TestFileProxyServer::removedProxy()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    const QUrl url = server.proxyUrl(token, QUrl("id/file"));
    RawClient waiting(server.serverPort());
    waiting.send(get(url));
    QTRY_COMPARE(proxy.requests.size(), 1);

    server.removeProxy(token);
    RawClient late(server.serverPort());
    late.send(get(url));
    QTRY_VERIFY(late.received().startsWith("HTTP/1.1 404 Not Found\r\n"));
    QCOMPARE(proxy.requests.size(), 1);
    QVERIFY(waiting.received().isEmpty());
    server.respond(token, QUrl("id/file"), 200, m_file);
    QTRY_VERIFY(waiting.received().endsWith("content\n"));
}

void TestFileProxyServer::clientThatLeavesWhileAllAreAnswered()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 20; ++i) {
        clients.push_back(std::make_unique<RawClient>(server.serverPort()));
        clients.back()->send(get(server.proxyUrl(token, QUrl("id/file"))));
    }
    QTRY_COMPARE(proxy.requests.size(), 20);
    for (int i = 0; i < 20; i += 2)
        clients[i]->abort();
    server.respond(token, QUrl("id/file"), 200, m_file);
    for (int i = 1; i < 20; i += 2)
        QTRY_VERIFY(clients[i]->received().endsWith("content\n"));
    QTRY_COMPARE(server.findChildren<QTcpSocket *>().size(), 10);
}

void TestFileProxyServer::lastHolderLetsGoInsideARequest()
{
    auto holder = FileProxyServer::instance();
    const QPointer<FileProxyServer> server = holder.data();
    Proxy proxy;
    const QString token = holder->addProxy(&proxy);
    proxy.answer = [&](const QUrl &url) {
        holder->respond(token, url, 200, m_file);
        holder.reset();
    };
    RawClient client(holder->serverPort());
    client.send(get(holder->proxyUrl(token, QUrl("id/file"))));
    QTRY_VERIFY(client.isClosed());
    QVERIFY(!holder);
    QVERIFY(!server);
    QCOMPARE(proxy.requests.size(), 1);
}

void TestFileProxyServer::lastHolderLetsGoOnAnotherThread()
{
    auto holder = FileProxyServer::instance();
    const QPointer<FileProxyServer> server = holder.data();
    RawClient client(holder->serverPort());
    QTRY_COMPARE(holder->findChildren<QTcpSocket *>().size(), 1);
    std::unique_ptr<QThread> thread(QThread::create([&holder] { holder.reset(); }));
    thread->start();
    QVERIFY(thread->wait());
    QVERIFY(server);
    QTRY_VERIFY(!server);
    QTRY_VERIFY(client.isClosed());
}

void TestFileProxyServer::connectionsLeaveNothingBehind()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    proxy.answer = [&](const QUrl &url) { server.respond(token, url, 200, m_file); };
    const int childrenBefore = server.children().size();
    for (int i = 0; i < 500; ++i) {
        RawClient client(server.serverPort());
        client.send(get(server.proxyUrl(token, QUrl("id/file"))));
        QTRY_VERIFY(client.received().endsWith("content\n"));
    }
    QTRY_COMPARE(server.children().size(), childrenBefore);
}

QTEST_GUILESS_MAIN(TestFileProxyServer)
#include "tst_fileproxyserver.moc"

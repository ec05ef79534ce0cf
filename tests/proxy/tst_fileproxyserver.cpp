// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/fileproxyserver.h"
#include "proxy/ifileproxy.h"
#include "proxy/proxyhostcheck.h"
#include "support/rawclient.h"
#include "support/testfiles.h"

#include <QPointer>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <functional>
#include <memory>
#include <vector>

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
    void hostsAreCheckedIfWanted();
    void idleClientsGiveWay();
    void oneServerForAllHolders();
    void tokens();
    void proxyUrl();
    void unknownTargets();
    void relativeUrlReachesTheProxy();
    void oneAnswerServesAllWhoWait();
    void targetsAreComparedAsText();
    void removedProxy();
    void clientsThatLeaveWhileAllAreAnswered();
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

void TestFileProxyServer::hostsAreCheckedIfWanted()
{
    FileProxyServer server;
    for (const bool wanted : {true, false}) {
        nk::pm::setProxyHostCheck(wanted);
        RawClient foreign(server.serverPort());
        foreign.send("GET / HTTP/1.1\r\nHost: evil.org\r\n\r\n");
        RawClient own(server.serverPort());
        own.send("GET / HTTP/1.1\r\nHost: localhost:1\r\n\r\n");
        QTRY_VERIFY(foreign.received().startsWith(wanted ? "HTTP/1.1 400" : "HTTP/1.1 404"));
        QTRY_VERIFY(own.received().startsWith("HTTP/1.1 404"));
        QTRY_COMPARE(foreign.isClosed(), wanted);
    }
}

void TestFileProxyServer::idleClientsGiveWay()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    const QByteArray request = get(server.proxyUrl(token, QUrl("file")));
    std::vector<std::unique_ptr<RawClient>> clients;
    const auto connectOne = [&] {
        clients.push_back(std::make_unique<RawClient>(server.serverPort()));
        clients.back()->send(request);
        QCoreApplication::processEvents();
    };
    while (clients.size() < FileProxyServer::maxConnections)
        connectOne();
    QTRY_COMPARE(proxy.requests.size(), FileProxyServer::maxConnections);
    connectOne(); // has to wait for one that is answered
    QCOMPARE(proxy.requests.size(), FileProxyServer::maxConnections);
    server.respond(token, QUrl("file"), 200, m_file);
    QTRY_COMPARE(proxy.requests.size(), FileProxyServer::maxConnections + 1);
    server.respond(token, QUrl("file"), 200, m_file);
    for (const auto &client : clients)
        QTRY_VERIFY(client->received().endsWith("content\n"));
    QTRY_VERIFY(clients.front()->isClosed());
}

void TestFileProxyServer::oneServerForAllHolders()
{
    auto holder = FileProxyServer::instance();
    const QPointer<FileProxyServer> first = holder.data();
    QCOMPARE(FileProxyServer::instance(), holder);
    QCOMPARE(first->serverAddress(), QHostAddress(QHostAddress::LocalHost));
    holder.reset();
    QVERIFY(!first);
    QVERIFY(FileProxyServer::instance()->isListening());
}

void TestFileProxyServer::tokens()
{
    FileProxyServer server;
    QSet<QString> tokens;
    const QRegularExpression form("\\A[A-Za-z0-9_-]{11}\\z");
    for (int i = 0; i < 1000; ++i) {
        const QString token = server.addProxy(nullptr);
        QVERIFY2(form.match(token).hasMatch(), qPrintable(token));
        tokens.insert(token);
    }
    QCOMPARE(tokens.size(), 1000);
}

void TestFileProxyServer::proxyUrl()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    const QString base = QString("http://localhost:%1/%2/").arg(server.serverPort()).arg(token);
    const auto proxied = [&](const QUrl &relative) {
        return server.proxyUrl(token, relative).toString(QUrl::FullyEncoded);
    };
    QCOMPARE(proxied(QUrl("id/a b.png")), base + "id/a%20b.png");
    QCOMPARE(proxied(QUrl(QString::fromUtf8("id/\u00e4"))), base + "id/%C3%A4");
    QCOMPARE(proxied(QUrl("id/%251%252")), base + "id/%251%252");
    QCOMPARE(proxied(QUrl("id/a?b")), base + "id/a?b");
    QCOMPARE(proxied(QUrl()), base);
    server.removeProxy(token);
    QCOMPARE(proxied(QUrl("id/a")), QString());
}

void TestFileProxyServer::unknownTargets()
{
    FileProxyServer server;
    const QByteArray nullProxy = "/" + server.addProxy(nullptr).toLatin1() + "/id/file";
    for (const QByteArray &target :
         {QByteArray("/"), QByteArray("///"), QByteArray(""), QByteArray("/AAAAAAAAAAA/id/file"),
          QByteArray("http://[::"), nullProxy}) {
        RawClient client(server.serverPort());
        client.send(get(target));
        QTRY_VERIFY2(client.received().endsWith("\r\n\r\nNot Found"), target.constData());
        QVERIFY(client.received().startsWith("HTTP/1.1 404 Not Found\r\n"));
    }
}

void TestFileProxyServer::relativeUrlReachesTheProxy()
{
    const QPair<QByteArray, QUrl> targets[] = {
        // behind the token
        {"/id/a.png", QUrl("id/a.png")},
        {"", QUrl()},
        {"//id///a.png", QUrl("id/a.png")},
        {"/id/%C3%A4%20b", QUrl(QString::fromUtf8("id/\u00e4 b"))},
        {"/id%2Fa", QUrl("id/a")},
        {"/id/a%3Fb", QUrl("id/a?b")},
        {"/id/a?b", QUrl("id/a")},
        {"/id/../../a", QUrl("id/../../a")}, // the proxy's to judge
    };
    FileProxyServer server;
    Proxy proxy, other;
    server.addProxy(&other);
    const QString token = server.addProxy(&proxy);
    for (const auto &[target, url] : targets) {
        RawClient client(server.serverPort());
        client.send(get("/" + token.toLatin1() + target));
        QTRY_COMPARE(proxy.requests.size(), 1);
        QCOMPARE(proxy.requests.takeFirst(), url);
    }
    QVERIFY(other.requests.isEmpty());
}

void TestFileProxyServer::oneAnswerServesAllWhoWait()
{
    FileProxyServer server;
    Proxy proxy;
    const QString token = server.addProxy(&proxy);
    const QString otherToken = server.addProxy(&proxy);
    const QUrl file("id/file");
    RawClient first(server.serverPort()), second(server.serverPort()), other(server.serverPort()),
        elsewhere(server.serverPort());
    first.send(get(server.proxyUrl(token, file)));
    second.send(get(server.proxyUrl(token, file)));
    other.send(get(server.proxyUrl(token, QUrl("id/other"))));
    elsewhere.send(get(server.proxyUrl(otherToken, file)));
    QTRY_COMPARE(proxy.requests.size(), 4);

    server.respond(token, file, 200, m_file);
    QTRY_VERIFY(first.received().endsWith("content\n"));
    QTRY_COMPARE(second.received(), first.received());
    QVERIFY(other.received().isEmpty() && elsewhere.received().isEmpty());
}

void TestFileProxyServer::targetsAreComparedAsText()
{
    const QPair<const char *, bool> targets[] = {
        // behind the token, and whether the proxy's answer finds who asked
        {"/id/file", true},   {"/id/50%25", true},     {"/id/a b", true},
        {"/id/a%20b", false}, {"/id/\xc3\xa4", false}, // reaches the proxy as Latin-1
        {"//id/file", false}, {"/id/%66ile", false},   {"/id/file?x", false},
    };
    for (const auto &[target, answered] : targets) {
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
        QVERIFY2(client.received().count("HTTP/1.1 200 OK\r\n") == (answered ? 2 : 0), target);
        QCOMPARE(client.received().count("HTTP/1.1 400 Bad Request\r\n"), answered ? 0 : 1);
    }
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

void TestFileProxyServer::clientsThatLeaveWhileAllAreAnswered()
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
    server.respond(token, QUrl("id/file"), 200, m_file); // before the server has noticed
    for (int i = 1; i < 20; i += 2)
        QTRY_VERIFY(clients[i]->received().endsWith("content\n"));
    QTRY_COMPARE(server.findChildren<QTcpSocket *>().size(), 10);
    server.respond(token, QUrl("id/file"), 200, m_file);
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

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/fileproxyconnection.h"
#include "support/rawclient.h"
#include "support/testfiles.h"

#include <QDir>
#include <QPointer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

using nk::pm::FileProxyConnection;
using nk::pm::test::numberedContent;
using nk::pm::test::RawClient;

namespace {

constexpr int mebibyte = 1024 * 1024;

QByteArray fileAnswer(const QByteArray &body, const QByteArray &type = "text/plain")
{
    return "HTTP/1.1 200 OK\r\nContent-Type: " + type
           + "\r\nConnection: keep-alive\r\nContent-Length: " + QByteArray::number(body.size())
           + "\r\n\r\n" + body;
}

QByteArray phraseAnswer(
    const QByteArray &status, const QByteArray &connection, const QByteArray &phrase)
{
    return "HTTP/1.1 " + status + " " + phrase + "\r\nConnection: " + connection
           + "\r\nContent-Length: " + QByteArray::number(phrase.size()) + "\r\n\r\n" + phrase;
}

const QByteArray badRequest = phraseAnswer("400", "close", "Bad Request");
const QByteArray notFound = phraseAnswer("404", "keep-alive", "Not Found");

QByteArray get(const QByteArray &target)
{
    return "GET " + target + " HTTP/1.1\r\nHost: localhost\r\n\r\n";
}

QByteArray headOf(const QByteArray &answer)
{
    return answer.left(answer.indexOf("\r\n\r\n") + 4);
}

constexpr int largeSize = 12 * mebibyte; // more than both kernel buffers take

const QByteArray &largeContent()
{
    static const QByteArray content =
        QByteArray(64, 't') + numberedContent(1, largeSize - 64); // told to be text by its start
    return content;
}

/// A directory of files and a port whose one connection answers requests for them: at once with the
/// file named by the path, with the status that is the path ("/404"), or never ("/later").
class Site : public QObject
{
public:
    Site()
    {
        m_server.listen(QHostAddress::LocalHost);
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            auto *made = new FileProxyConnection(m_server.nextPendingConnection(), this);
            connection = made;
            connect(made, &FileProxyConnection::fileRequested, this, &Site::answer);
            connect(made, &FileProxyConnection::closed, this, [this, made] {
                ++closedCount;
                made->deleteLater();
            });
        });
    }

    quint16 port() const { return m_server.serverPort(); }
    QString path(const QString &name) const { return m_directory.filePath(name); }

    QString addFile(const QString &name, const QByteArray &content) const
    {
        nk::pm::test::writeFile(path(name), content);
        return path(name);
    }

    /// Of the files in the directory, those that this process holds open.
    int openFiles() const
    {
        const QFileInfoList handles =
            QDir("/proc/self/fd").entryInfoList(QDir::AllEntries | QDir::System);
        return int(std::count_if(handles.begin(), handles.end(), [this](const QFileInfo &handle) {
            return handle.symLinkTarget().startsWith(m_directory.path());
        }));
    }

    qint64 bytesInSocket() const { return connection->findChild<QTcpSocket *>()->bytesToWrite(); }
    qint64 bytesUnread() const { return connection->findChild<QTcpSocket *>()->bytesAvailable(); }

    QPointer<FileProxyConnection> connection;
    QVector<QUrl> requests;
    int closedCount = 0;

private:
    void answer(const QUrl &url)
    {
        requests.append(url);
        const QString name = url.path().mid(1);
        if (name == "later")
            return;
        const int status = name.toInt();
        connection->sendResponse(status ? status : 200, status ? QString() : path(name));
    }

    QTemporaryDir m_directory;
    QTcpServer m_server;
};

} // namespace

class TestFileProxyConnection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exchange_data();
    void exchange();

    void everyStatusButOkLeavesTheConnectionWaiting();
    void answerForNobody();
    void contentTypeComesFromTheFirstBytes();
    void announcedBytesThatCantBeReadCloseTheConnection();

    void answersKeepTheirOrderWhileABodyDrains();
    void closeWaitsForTheBodyBeforeIt();
    void refusedClientCantHoldTheConnection();
    void clientThatStopsReadingCostsLittle();
    void clientThatFinishedSendingGetsItsAnswer();
    void clientThatLeavesMidBody();
    void fileThatShrinksWhileSent();
    void fileThatGrowsAndGoesWhileSent();

    void endlessLine();
    void manyRequestsLeaveNothingBehind();
};

void TestFileProxyConnection::exchange_data()
{
    QTest::addColumn<QByteArray>("sent");
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("closed");
    const auto stays = [](const char *name, const QByteArray &sent, const QByteArray &answer) {
        QTest::newRow(name) << sent << answer << false;
    };
    const auto closes = [](const char *name, const QByteArray &sent, const QByteArray &answer) {
        QTest::newRow(name) << sent << answer << true;
    };
    const QByteArray hello = fileAnswer("hello\n");
    const QByteArray empty = fileAnswer("", "application/x-zerosize");
    const QByteArray unknownMethod = phraseAnswer("405", "close", "Method Not Allowed");
    const QByteArray line = "GET /hello HTTP/1.1\r\n";

    stays("range is ignored", line + "Range: bytes=1-2\r\n\r\n", hello);
    stays("connection header is ignored", line + "Connection: close\r\n\r\n", hello);
    stays("junk among headers", line + "junk\r\n : \r\n\xff\r\n\r\n", hello);
    stays("bare line feed doesn't end the headers", "GET /hello HTTP/1.1\n\n\n", {});
    stays(
        "long header arrives in parts", line + "X: " + QByteArray(20000, 'x') + "\r\n\r\n", hello);
    stays(
        "header whose last part is CR LF ends them", line + QByteArray(4095, 'x') + "\r\n", hello);
    stays(
        "no status phrase", get("/500"),
        "HTTP/1.1 500 \r\nConnection: keep-alive\r\nContent-Length: 0\r\n\r\n");
    stays("head of what isn't found", "HEAD /404 HTTP/1.1\r\n\r\n", headOf(notFound));
    stays("file that can't be opened", get("/missing").repeated(2), empty.repeated(2));
    stays(
        "cut request line of blanks is whole",
        "GET /hello HTTP/1.1" + QByteArray(5000, ' ') + "\r\n\r\n", hello);
    stays(
        "pipelined", get("/hello") + get("/empty") + "HEAD /hello HTTP/1.1\r\n\r\n" + get("/404"),
        hello + empty + headOf(hello) + notFound);
    stays("part of a line while a request waits", get("/later") + "GET", {});

    closes("version 1.0", "GET /hello HTTP/1.0\r\n\r\n", badRequest);
    closes("empty line first", "\r\n" + get("/hello"), badRequest);
    closes("unknown method", "POST /hello HTTP/1.1\r\n", unknownMethod);
    closes("head of a bad request has a body", "HEAD /hello HTTP/9\r\n", badRequest);
    closes("cut request line", get("/" + QByteArray(4096, 'x')), badRequest);
    closes("line longer than the read buffer", get("/" + QByteArray(300000, 'x')), badRequest);
    closes("pipelined, the second bad", get("/hello") + "\r\n" + get("/hello"), hello + badRequest);
    closes("second request while the first waits", get("/later") + get("/hello"), badRequest);
    closes("any line while a request waits", get("/later") + "\n", badRequest);
    closes(
        "request after another status than 200", get("/404") + get("/hello"),
        notFound + badRequest);
}

void TestFileProxyConnection::exchange()
{
    QFETCH(QByteArray, sent);
    QFETCH(QByteArray, answer);
    QFETCH(bool, closed);
    for (const int size : {sent.size(), 1 + sent.size() / 500}) {
        Site site;
        site.addFile("hello", "hello\n");
        site.addFile("empty", "");
        RawClient client(site.port());
        for (int i = 0; i < sent.size() && !client.isClosed(); i += size) {
            client.send(sent.mid(i, size));
            QCoreApplication::processEvents();
        }
        QTRY_VERIFY(closed ? client.isClosed() : client.received().size() >= answer.size());
        QCOMPARE(client.received(), answer);
        QTRY_COMPARE(site.closedCount, closed ? 1 : 0);
    }
}

void TestFileProxyConnection::everyStatusButOkLeavesTheConnectionWaiting()
{
    Site site;
    RawClient client(site.port());
    client.send(get("/later"));
    QTRY_COMPARE(site.requests.size(), 1);
    site.connection->sendResponse(404, QString());
    QCOMPARE(site.connection->state(), FileProxyConnection::AwaitingResponse);
    site.connection->sendResponse(200, site.addFile("late", "late\n"));
    QCOMPARE(site.connection->state(), FileProxyConnection::ReadingRequestLine);
    QTRY_COMPARE(client.received(), notFound + fileAnswer("late\n"));

    client.send(get("/late"));
    QTRY_COMPARE(client.received(), notFound + fileAnswer("late\n").repeated(2));
}

void TestFileProxyConnection::answerForNobody()
{
    Site site;
    const QString file = site.addFile("hello", "hello\n");
    RawClient client(site.port());
    QTRY_VERIFY(site.connection);
    site.connection->sendResponse(200, file);
    client.send("GET /later HTTP/1.1\r\n");
    QTRY_COMPARE(site.connection->state(), FileProxyConnection::ReadingHeaders);
    site.connection->sendResponse(200, file);
    client.send("\r\n");
    QTRY_COMPARE(site.connection->state(), FileProxyConnection::AwaitingResponse);
    QVERIFY(client.received().isEmpty());

    // A client that is gone: between its end and the object's.
    connect(site.connection, &FileProxyConnection::closed, this, [&] {
        site.connection->sendResponse(200, file);
    });
    client.abort();
    QTRY_COMPARE(site.closedCount, 1);
    QCOMPARE(site.openFiles(), 0);
    QTRY_VERIFY(!site.connection);
}

void TestFileProxyConnection::contentTypeComesFromTheFirstBytes()
{
    const QPair<QByteArray, QByteArray> types[] = {
        {QByteArray::fromHex("89504e470d0a1a0a0000000d49484452"), "image/png"},
        {QByteArray(64, 'x') + QByteArray(64, '\1'), "text/plain"}, // the first 64 bytes count
        {QByteArray(64, '\x10'), "application/octet-stream"},
    };
    for (const auto &[content, type] : types) {
        Site site;
        site.addFile("misleading.html", content);
        RawClient client(site.port());
        client.send(get("/misleading.html").repeated(2));
        QTRY_COMPARE(client.received(), fileAnswer(content, type).repeated(2));
    }
}

void TestFileProxyConnection::announcedBytesThatCantBeReadCloseTheConnection()
{
    Site site;
    QVERIFY(QDir(site.path("")).mkdir("directory"));
    const qint64 size = QFile(site.path("directory")).size();
    QVERIFY(size > 0);
    RawClient client(site.port());
    client.send(get("/directory") + get("/404"));
    QTRY_VERIFY(client.isClosed());
    QCOMPARE(
        client.received(),
        headOf(fileAnswer(QByteArray(int(size), ' '), "application/x-zerosize")));
}

void TestFileProxyConnection::answersKeepTheirOrderWhileABodyDrains()
{
    Site site;
    const QByteArray &large = largeContent();
    site.addFile("large", large);
    site.addFile("small", "small\n");
    RawClient client(site.port(), RawClient::Waits);
    client.send(get("/large") + get("/small") + get("/later"));

    // The body is still on its way, and the third request waits already.
    QTRY_COMPARE(site.requests.size(), 3);
    QVERIFY(site.bytesInSocket() > 0);
    site.connection->sendResponse(200, site.path("small"));
    client.startReading();
    const QByteArray all = fileAnswer(large) + fileAnswer("small\n") + fileAnswer("small\n");
    QTRY_COMPARE(client.received().size(), all.size());
    QVERIFY(client.received() == all);
    QCOMPARE(site.openFiles(), 0);
}

void TestFileProxyConnection::closeWaitsForTheBodyBeforeIt()
{
    Site site;
    const QByteArray &large = largeContent();
    site.addFile("large", large);
    RawClient client(site.port(), RawClient::Waits);
    client.send(get("/large") + get("/later") + get("/never-read") + QByteArray(4 * mebibyte, 'x'));
    QTRY_COMPARE(site.requests.size(), 2);
    client.startReading();
    QTRY_VERIFY(client.isClosed());
    QCOMPARE(client.received().size(), (fileAnswer(large) + badRequest).size());
    QVERIFY(client.received() == fileAnswer(large) + badRequest);
    QCOMPARE(site.requests.size(), 2);
    QTRY_COMPARE(site.closedCount, 1);
}

void TestFileProxyConnection::refusedClientCantHoldTheConnection()
{
    Site site;
    site.addFile("large", largeContent());
    RawClient talker(site.port());
    talker.send("BAD\r\n");
    QTimer talk;
    connect(&talk, &QTimer::timeout, this, [&talker] { talker.send("x"); });
    talk.start(10);
    RawClient deaf(site.port(), RawClient::Waits);
    deaf.send(get("/large") + "BAD\r\nBAD\r\n");
    QTRY_COMPARE(site.closedCount, 2);
}

void TestFileProxyConnection::clientThatStopsReadingCostsLittle()
{
    Site site;
    const QByteArray body = largeContent().left(mebibyte);
    site.addFile("large", body);
    const int count = 200;
    const QByteArray request = "GET /large HTTP/1.1\r\nX: " + QByteArray(3000, 'x') + "\r\n\r\n";
    RawClient client(site.port(), RawClient::Waits);
    client.send(request.repeated(count));

    // The first answers fill the kernel's buffers, then only so many are begun.
    int previous = -1;
    const auto standsStill = [&] {
        return previous == std::exchange(previous, site.requests.size());
    };
    QTRY_VERIFY(!site.requests.isEmpty() && standsStill() && site.bytesInSocket() > 0);
    QVERIFY2(site.requests.size() < 50, QByteArray::number(site.requests.size()));
    QVERIFY(site.openFiles() <= 4);
    QVERIFY(site.bytesInSocket() <= 256 * 1024);
    QVERIFY(site.bytesUnread() <= 64 * 1024);

    client.startReading();
    const QByteArray answer = fileAnswer(body);
    QTRY_COMPARE_WITH_TIMEOUT(client.received().size(), count * answer.size(), 60000);
    for (int i = 0; i < count; ++i)
        QVERIFY(client.received().mid(i * answer.size(), answer.size()) == answer);
}

void TestFileProxyConnection::clientThatFinishedSendingGetsItsAnswer()
{
    Site site;
    site.addFile("hello", "hello\n");
    RawClient client(site.port());
    client.send(get("/hello"));
    client.finishSending();
    QTRY_VERIFY(client.isClosed());
    QCOMPARE(client.received(), fileAnswer("hello\n"));
}

void TestFileProxyConnection::clientThatLeavesMidBody()
{
    Site site;
    site.addFile("large", largeContent());
    RawClient client(site.port(), RawClient::Waits);
    client.send(get("/large").repeated(3));
    QTRY_COMPARE(site.requests.size(), 3);
    QCOMPARE(site.openFiles(), 3);
    client.abort();
    QTRY_COMPARE(site.closedCount, 1);
    QCOMPARE(site.openFiles(), 0);
}

void TestFileProxyConnection::fileThatShrinksWhileSent()
{
    Site site;
    const QByteArray &large = largeContent();
    const QString path = site.addFile("large", large);
    site.addFile("small", "small\n");
    RawClient client(site.port(), RawClient::Waits);
    client.send(get("/large") + get("/small") + get("/later"));
    QTRY_COMPARE(site.requests.size(), 3);
    QVERIFY(QFile::resize(path, largeSize - 1));
    client.startReading();
    QTRY_VERIFY(client.isClosed());
    QVERIFY(client.received() == headOf(fileAnswer(large)) + large.left(largeSize - 1));
}

void TestFileProxyConnection::fileThatGrowsAndGoesWhileSent()
{
    Site site;
    const QByteArray &large = largeContent();
    const QString path = site.addFile("large", large);
    site.addFile("small", "small\n");
    RawClient client(site.port(), RawClient::Waits);
    client.send(get("/large") + get("/small"));
    QTRY_COMPARE(site.requests.size(), 2);
    QVERIFY(QFile::resize(path, largeSize + mebibyte) && QFile::remove(path));
    client.startReading();
    const QByteArray all = fileAnswer(large) + fileAnswer("small\n");
    QTRY_COMPARE(client.received().size(), all.size());
    QVERIFY(client.received() == all);
}

void TestFileProxyConnection::endlessLine()
{
    Site site;
    RawClient client(site.port());
    QTRY_VERIFY(site.connection);
    qint64 mostUnread = 0;
    for (int i = 0; i < 64; ++i) {
        client.send(QByteArray(mebibyte / 8, 'x'));
        QCoreApplication::processEvents();
        mostUnread = std::max(mostUnread, site.bytesUnread());
    }
    QVERIFY(mostUnread > 0);
    QVERIFY(mostUnread <= 64 * 1024);
    QVERIFY(client.received().isEmpty());
    client.send("\n");
    QTRY_VERIFY(client.isClosed());
    QCOMPARE(client.received(), badRequest);
}

void TestFileProxyConnection::manyRequestsLeaveNothingBehind()
{
    Site site;
    site.addFile("hello", "hello\n");
    RawClient client(site.port());
    const int count = 10000;
    for (int sent = 0; sent < count; sent += 100)
        client.send(get("/hello").repeated(100));
    QTRY_COMPARE_WITH_TIMEOUT(
        client.received().size(), fileAnswer("hello\n").size() * count, 60000);
    QVERIFY(client.received() == fileAnswer("hello\n").repeated(count));
    QCOMPARE(site.openFiles(), 0);
    QCOMPARE(
        site.connection->findChildren<QObject *>(QString(), Qt::FindDirectChildrenOnly).size(), 1);
}

QTEST_GUILESS_MAIN(TestFileProxyConnection)
#include "tst_fileproxyconnection.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/columns.h"
#include "support/httptestserver.h"
#include "support/testfiles.h"

#include <norvak/request.h>
#include <norvak/requestcarrier.h>

#include <QAuthenticator>
#include <QBuffer>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTimer>
#include <QtTest>

using namespace nk;
using namespace nk::pm::test;

namespace {

const QByteArray text = "The quick brown fox\r\njumps over\n\nthe lazy dog.";
const HttpTestAnswer threeOfNineBytes =
    HttpTestAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc");
constexpr int largeSize = 3 * 1024 * 1024 + 1;

/// A device that takes so many bytes and then is full.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(qint64 room)
        : m_room(room)
    {
        open(QIODevice::WriteOnly);
    }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *, qint64 size) override
    {
        const qint64 taken = qMin(size, m_room);
        m_room -= taken;
        return taken;
    }

private:
    qint64 m_room;
};

/// A device that runs an event loop in each write.
struct WaitingBuffer : QBuffer
{
    qint64 writeData(const char *data, qint64 size) override
    {
        QCoreApplication::processEvents();
        return QBuffer::writeData(data, size);
    }
};

/// One running GET, and what it came to, read in finished() as users of Request do.
struct Get
{
    QPointer<Request> request;
    int code = -1;
    QByteArray bytes;
    QNetworkReply::NetworkError error = QNetworkReply::NoError;
    int finishedCount = 0;

    Get(const QNetworkRequest &what, QNetworkAccessManager *manager, QIODevice *sink = nullptr)
        : request(new GetRequest(what, manager))
    {
        request->setSuppressErrors(true);
        request->setDataSink(sink);
        QObject::connect(request, &Request::finished, request, [this] {
            ++finishedCount;
            code = request->responseCode();
            bytes = request->rawResponse();
            error = request->reply()->error();
        });
    }
    Get(const QUrl &url, QNetworkAccessManager *manager, QIODevice *sink = nullptr)
        : Get(QNetworkRequest(url), manager, sink)
    {}

    ~Get() { delete request; }

    /// True once the request has finished, once, and deleted itself.
    bool ended()
    {
        if (finishedCount == 0)
            QSignalSpy(request, &Request::finished).wait(60000);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return !request && finishedCount == 1;
    }

    /// Ticks of one of the clocks; a silent server is given eight of the first.
    void tick(int ticks, const char *clock = "silence")
    {
        for (int i = 0; i < ticks && request && finishedCount == 0; ++i) {
            auto *timer = request->findChild<QTimer *>(QLatin1String(clock));
            QTimerEvent event(timer->timerId());
            QCoreApplication::sendEvent(timer, &event);
        }
    }
};

/// Many running GETs, each with the number that its path names.
struct Gets
{
    std::vector<std::unique_ptr<Get>> all;

    Gets(const HttpTestServer &server, int count, QNetworkAccessManager *manager)
    {
        for (int i = 0; i < count; ++i)
            all.push_back(std::make_unique<Get>(server.url(QString("/%1").arg(i)), manager));
    }
    bool ended()
    {
        return std::all_of(all.begin(), all.end(), [](const auto &get) { return get->ended(); });
    }
};

} // namespace

class tst_Request : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void cutAtAnyByteIsNoAnswer_data();
    void cutAtAnyByteIsNoAnswer();
    void cutAnywhereIsNoAnswer();
    void largeBodies_data();
    void largeBodies();
    void refusedWriteFails();
    void bodyBeyondTheLimitFails();
    void deletedSinkFails();
    void followsRedirects_data();
    void followsRedirects();
    void refusesUnsafeRedirects();
    void credentialsStayWithTheirOrigin();
    void givesUpOnSilence();
    void waitingForAConnectionIsNoSilence();
    void givesUpOnWhatIsTooSlow();
    void conditionsMayBeMet();
    void managerHasItsSay();
    void managerIsAskedForCredentials_data();
    void managerIsAskedForCredentials();
    void endsWithTheProcess();
    void destroyedWhileRunning();
    void destroyedInFinished();
    void managerDies();
    void nothingToSendWith();
    void logsFailuresUnlessSuppressed();
    void manyAtOnceLeaveNothingBehind();

private:
    QNetworkAccessManager m_manager;
};

void tst_Request::answers_data()
{
    Columns<HttpTestAnswer, int, QByteArray> table("answer", "code", "bytes");
    const auto row = [&](const char *name, const HttpTestAnswer &answer, int code,
                         const QByteArray &bytes = {}) { table.row(name, answer, code, bytes); };
    const auto head = [](const QByteArray &status, const QByteArray &rest) {
        return HttpTestAnswer::raw("HTTP/1.1 " + status + "\r\n" + rest);
    };
    const auto closing = [&](const QByteArray &rest) {
        return head("200 OK", rest).cutAt(INT_MAX);
    };
    const auto chunks = [&](const QByteArray &rest) {
        return head("200 OK", "Transfer-Encoding: chunked\r\n" + rest);
    };
    const auto lines = [](int count) { return QByteArray("X: y\r\n").repeated(count); };

    row("length", HttpTestAnswer::ok(text), 200, text);
    row("no body", HttpTestAnswer::ok({}), 200);
    row("byte by byte", HttpTestAnswer::ok(text).inPieces(1), 200, text);
    row("chunks byte by byte", HttpTestAnswer::chunked(text, 7).inPieces(1), 200, text);
    row("chunks, then closed", HttpTestAnswer::chunked(text, 7).cutAt(INT_MAX), 200, text);
    row("chunks with a trailer", chunks("\r\n3;a=b\r\nabc\r\n0\r\nETag: x\r\n\r\n"), 200, "abc");
    row("204", head("204 No Content", "\r\n"), 204);
    row("206 that wasn't asked for", HttpTestAnswer::of(206, text), 206, text);
    row("304 that wasn't asked for", HttpTestAnswer::of(304), 0);
    row("400", HttpTestAnswer::of(400, text), 400, text);
    row("401", HttpTestAnswer::of(401, text, "WWW-Authenticate: Basic realm=\"r\"\r\n"), 401, text);
    row("503", HttpTestAnswer::of(503, text), 503, text);
    row("redirect to nowhere", HttpTestAnswer::of(302, "x"), 302);
    row("packed though unasked", HttpTestAnswer::of(200, text, "Content-Encoding: gzip\r\n"), 200,
        text);
    row("longer than announced", closing("Content-Length: 3\r\n\r\nabcdef"), 200, "abc");
    row("continued", head("100 Continue", "\r\nHTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc"),
        200, "abc");
    row("endless error page",
        head("500 No", "Content-Length: 999999999\r\n\r\n" + QByteArray(100000, 'x')), 500,
        QByteArray(64 * 1024, 'x'));
    row("as many headers as there may be", HttpTestAnswer::of(200, text, lines(197)), 200, text);

    row("ends with the connection", closing("\r\nabc"), 0);
    row("length is no number", closing("Content-Length: +3\r\n\r\nabc"), 0);
    row("two lengths", closing("Content-Length: 3\r\nContent-Length: 2\r\n\r\nabc"), 0);
    row("length and chunks", chunks("Content-Length: 3\r\n\r\n3\r\nabc\r\n0\r\n\r\n"), 0);
    row("coding that isn't known", closing("Transfer-Encoding: gzip, chunked\r\n\r\n0\r\n\r\n"), 0);
    row("size of a chunk is no number", chunks("\r\n3\r\nabc\r\nxyz\r\n0\r\n\r\n"), 0, "abc");
    row("size of a chunk is negative", chunks("\r\n3\r\nabc\r\n-1\r\n0\r\n\r\n"), 0, "abc");
    row("size of a chunk is too large", chunks("\r\n3\r\nabc\r\nfffffffffffffffff\r\n0\r\n\r\n"), 0,
        "abc");
    row("not HTTP", HttpTestAnswer::raw("220 mail.example ESMTP\r\n\r\n").cutAt(INT_MAX), 0);
    row("header without a colon", HttpTestAnswer::of(200, text, "nonsense\r\n"), 0);
    row("another protocol", head("101 Switching Protocols", "Upgrade: x\r\n\r\n"), 0);
    row("one header too many", HttpTestAnswer::of(200, text, lines(198)), 0);
    row("flood of headers", HttpTestAnswer::of(200, text, lines(100000)), 0);
    row("headers too long",
        HttpTestAnswer::of(302, {}, "Location: /" + QByteArray(3000000, 'x') + "\r\n"), 0);
    row("continued for ever",
        HttpTestAnswer::raw(QByteArray("HTTP/1.1 100 Continue\r\n\r\n").repeated(10000)), 0);
}

void tst_Request::answers()
{
    QFETCH(HttpTestAnswer, answer);
    QFETCH(int, code);
    HttpTestServer server(answer);
    int ended = 0;
    connect(&m_manager, &QNetworkAccessManager::finished, &server, [&] { ++ended; });
    Get get(server.url(), &m_manager);
    QVERIFY(get.ended());
    QCOMPARE(get.code, code);
    QTEST(get.bytes, "bytes");
    QCOMPARE(get.error == QNetworkReply::NoError, code > 0 && code < 400); // one verdict
    QCOMPARE(ended, 1);
    QCOMPARE(server.requestCount(), 1);
    QCOMPARE(server.requests().first().headers.value("accept-encoding"), QByteArray("identity"));
}

void tst_Request::cutAtAnyByteIsNoAnswer_data()
{
    Columns<HttpTestAnswer>("answer")
        .row("length", HttpTestAnswer::ok(text))
        .row("chunks", HttpTestAnswer::chunked(text, 13))
        .row("error", HttpTestAnswer::of(404, text))
        .row("redirect", HttpTestAnswer::redirect("/elsewhere"));
}

void tst_Request::cutAtAnyByteIsNoAnswer()
{
    QFETCH(HttpTestAnswer, answer);
    auto ending = HttpTestAnswer::Closes;
    int delay = 0;
    HttpTestServer server([&](const HttpTestRequest &request) {
        return answer.cutAt(request.target.mid(1).toInt(), ending, delay);
    });
    for (int way = 0; way < 4; ++way) {
        ending = way % 2 ? HttpTestAnswer::Resets : HttpTestAnswer::Closes;
        delay = way / 2 * 20;
        Gets gets(server, answer.bytes.size(), &m_manager);
        QVERIFY(gets.ended());
        for (const auto &get : gets.all)
            QVERIFY(get->code == 0 && text.startsWith(get->bytes));
    }
    QCOMPARE(server.requestCount(), 4 * answer.bytes.size());
}

// Larger ones, by chance: a sample, or some thousands with NKPM_HOSTILE.
void tst_Request::cutAnywhereIsNoAnswer()
{
    const QByteArray body = numberedContent(1, 200000);
    QRandomGenerator random(1);
    HttpTestServer server([&](const HttpTestRequest &) {
        const int chunk = 1 + random.bounded(random.bounded(2) ? 50 : 70000);
        const auto answer =
            random.bounded(4) ? HttpTestAnswer::chunked(body, chunk) : HttpTestAnswer::ok(body);
        return answer.inPieces(1 + random.bounded(100000))
            .cutAt(
                random.bounded(answer.bytes.size()),
                random.bounded(2) ? HttpTestAnswer::Closes : HttpTestAnswer::Resets,
                random.bounded(2) * 20);
    });
    const int rounds = qEnvironmentVariableIsSet("NKPM_HOSTILE") ? 100 : 2;
    for (int round = 0; round < rounds; ++round) {
        Gets gets(server, 50, &m_manager);
        QVERIFY(gets.ended());
        for (const auto &get : gets.all)
            QVERIFY(get->code == 0 && body.startsWith(get->bytes));
    }
}

void tst_Request::largeBodies_data()
{
    const QByteArray large = numberedContent(1, largeSize);
    Columns<HttpTestAnswer>("answer")
        .row("length", HttpTestAnswer::ok(large).inPieces(100000))
        .row("length, closing", HttpTestAnswer::ok(large).cutAt(INT_MAX))
        .row("chunks", HttpTestAnswer::chunked(large, 4096).inPieces(100000))
        .row("chunks, closing", HttpTestAnswer::chunked(large, 4096).cutAt(INT_MAX));
}

void tst_Request::largeBodies()
{
    QFETCH(HttpTestAnswer, answer);
    HttpTestServer server(answer);
    const QByteArray large = numberedContent(1, largeSize);
    WaitingBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    Get intoSink(server.url(), &m_manager, &sink);
    Get intoMemory(server.url(), &m_manager);
    const auto hearMore = [] { QCoreApplication::processEvents(); };
    connect(intoMemory.request->reply(), &QNetworkReply::metaDataChanged, &server, hearMore);
    connect(intoMemory.request->reply(), &QNetworkReply::downloadProgress, &server, hearMore);
    QVERIFY(intoSink.ended() && intoMemory.ended());
    QVERIFY(intoSink.code == 200 && intoSink.bytes.isEmpty() && sink.data() == large);
    QVERIFY(intoMemory.code == 200 && intoMemory.bytes == large);
}

void tst_Request::refusedWriteFails()
{
    HttpTestServer server(HttpTestAnswer::ok(numberedContent(1, largeSize)));
    for (const int room : {0, 150000, largeSize - 1}) {
        FullDevice sink(room);
        Get get(server.url(), &m_manager, &sink);
        QVERIFY(get.ended());
        QVERIFY2(get.code == 0, qPrintable(QString("room for %1").arg(room)));
    }
}

void tst_Request::bodyBeyondTheLimitFails()
{
    HttpTestServer server(HttpTestAnswer::chunked(numberedContent(1, largeSize), 4096));
    for (const int room : {0, largeSize - 1, largeSize}) {
        Get get(server.url(), &m_manager);
        get.request->setMaximumBodySize(room);
        QVERIFY(get.ended());
        QCOMPARE(get.code, room < largeSize ? 0 : 200);
        QCOMPARE(get.bytes.size(), room < largeSize ? 0 : largeSize);
    }
}

void tst_Request::deletedSinkFails()
{
    HttpTestServer server(HttpTestAnswer::silence());
    auto *sink = new QBuffer;
    QVERIFY(sink->open(QIODevice::WriteOnly));
    Get get(server.url(), &m_manager, sink);
    QTRY_COMPARE(server.heldCount(), 1);
    delete sink;
    server.answerHeld(HttpTestAnswer::ok({}));
    QVERIFY(get.ended());
    QCOMPARE(get.code, 0);
}

void tst_Request::followsRedirects_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("hops");
    QTest::addColumn<int>("code");
    for (int status : {301, 302, 303, 307, 308})
        QTest::addRow("%d", status) << status << 1 << 200;
    QTest::newRow("as many as allowed") << 302 << 10 << 200;
    QTest::newRow("one too many") << 302 << 11 << 0;
}

void tst_Request::followsRedirects()
{
    QFETCH(int, status);
    QFETCH(int, hops);
    HttpTestServer server([&](const HttpTestRequest &request) {
        const int hop = request.target.mid(1).toInt();
        const QByteArray next = "Location: " + QByteArray::number(hop + 1) + "\r\n";
        if (hop % 2 == 1 && hop < hops) // ends with the connection
            return HttpTestAnswer::raw("HTTP/1.0 302 Found\r\n" + next + "\r\nx").cutAt(INT_MAX);
        return hop < hops ? HttpTestAnswer::of(status, numberedContent(1, 200000), next)
                          : HttpTestAnswer::ok(text);
    });
    QBuffer sink;
    QVERIFY(sink.open(QIODevice::WriteOnly));
    Get get(server.url("/0"), &m_manager, &sink);
    QVERIFY(get.ended());
    QTEST(get.code, "code");
    QCOMPARE(sink.data(), get.code == 200 ? text : QByteArray()); // not what came on the way
    QCOMPARE(server.requestCount(), qMin(hops, 10) + 1);
}

void tst_Request::refusesUnsafeRedirects()
{
    for (const char *location :
         {"file:///etc/hostname", "data:text/plain,hello", "qrc:/text", "ftp://127.0.0.1/",
          "http:///path", "http://["}) {
        HttpTestServer server(HttpTestAnswer::redirect(location));
        Get get(server.url(), &m_manager);
        QVERIFY(get.ended());
        QVERIFY2(get.code == 0 && get.bytes.isEmpty() && server.requestCount() == 1, location);
    }
}

// A stranger must not be able to choose where our credentials go, not even among our own URLs.
void tst_Request::credentialsStayWithTheirOrigin()
{
    HttpTestServer own(HttpTestAnswer::ok(text));
    HttpTestServer other(HttpTestAnswer::redirect(own.url("/chosen").toEncoded()));
    own.setHandler([&](const HttpTestRequest &request) {
        if (request.target == "/chosen")
            return HttpTestAnswer::ok(text);
        return HttpTestAnswer::redirect(request.target == "/" ? "/again" : other.url().toEncoded());
    });
    QNetworkRequest request(own.url());
    request.setRawHeader("Authorization", "Bearer secret");
    request.setRawHeader("Cookie", "secret=1");
    request.setRawHeader("X-Kept", "1");
    Get get(request, &m_manager);
    QVERIFY(get.ended());
    QCOMPARE(get.code, 200);
    QCOMPARE(own.requestCount(), 3);
    QCOMPARE(own.requests().at(1).headers.value("authorization"), QByteArray("Bearer secret"));
    QCOMPARE(own.requests().at(1).headers.value("cookie"), QByteArray("secret=1"));
    for (const auto &headers : {other.requests().first().headers, own.requests().last().headers}) {
        QVERIFY(!headers.contains("authorization") && !headers.contains("cookie"));
        QCOMPARE(headers.value("x-kept"), QByteArray("1"));
    }
}

void tst_Request::givesUpOnSilence()
{
    for (const HttpTestAnswer &answer : {HttpTestAnswer::silence(), threeOfNineBytes}) {
        HttpTestServer server(answer);
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Get get(server.url(), &m_manager, &sink);
        QTRY_COMPARE(server.heldCount() + int(sink.size()), answer.keepsSilent ? 1 : 3);
        get.tick(8); // the first of them may see new bytes
        QCOMPARE(get.finishedCount, answer.keepsSilent ? 1 : 0);
        get.tick(1);
        QCOMPARE(get.finishedCount, 1);
        QCOMPARE(get.code, 0);
    }
    // And by the real clock.
    HttpTestServer server(HttpTestAnswer::silence());
    QNetworkRequest impatient(server.url());
    impatient.setTransferTimeout(1);
    Get other(impatient, &m_manager);
    QVERIFY(other.ended());
    QCOMPARE(other.code, 0);
}

void tst_Request::waitingForAConnectionIsNoSilence()
{
    HttpTestServer server(HttpTestAnswer::silence());
    Gets ahead(server, 6, &m_manager);
    QTRY_COMPARE(server.heldCount(), 6);
    Get waiting(server.url(), &m_manager);
    waiting.tick(20);
    QCOMPARE(waiting.finishedCount, 0);
    server.answerHeld(HttpTestAnswer::ok(text));
    QVERIFY(ahead.ended());
    QTRY_COMPARE(server.heldCount(), 1);
    server.answerHeld(HttpTestAnswer::ok(text));
    QVERIFY(waiting.ended());
    QCOMPARE(waiting.code, 200);
}

void tst_Request::givesUpOnWhatIsTooSlow()
{
    HttpTestServer server(threeOfNineBytes);
    for (const int rate : {100, 0}) {
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Get get(server.url(), &m_manager, &sink);
        get.request->setLowestRate(rate, std::chrono::seconds(2));
        QTRY_COMPARE(sink.size(), 3);
        get.tick(1, "rate"); // until now the answer may just have begun
        QCOMPARE(get.finishedCount, 0);
        get.tick(1, "rate");
        QCOMPARE(get.error, rate > 0 ? QNetworkReply::TimeoutError : QNetworkReply::NoError);
    }
    Get whole(server.url(), &m_manager);
    whole.request->setTotalTimeout(std::chrono::milliseconds(1));
    QVERIFY(whole.ended());
    QCOMPARE(whole.code, 0);
}

void tst_Request::destroyedWhileRunning()
{
    for (const HttpTestAnswer &answer : {HttpTestAnswer::silence(), threeOfNineBytes}) {
        HttpTestServer server(answer);
        QBuffer sink;
        QVERIFY(sink.open(QIODevice::WriteOnly));
        Get get(server.url(), &m_manager, &sink);
        QTRY_COMPARE(server.requestCount(), 1);
        QTRY_COMPARE(sink.size(), answer.keepsSilent ? 0 : 3);
        delete get.request;
        QCOMPARE(get.finishedCount, 0);
        QTRY_COMPARE(server.findChildren<QTcpSocket *>().size(), 0); // the transfer ends too
    }
}

void tst_Request::destroyedInFinished()
{
    HttpTestServer server(HttpTestAnswer::ok(text));
    for (qint64 room : {0, 1000}) { // finished by a refused write, and by the reply
        FullDevice sink(room);
        QPointer<Request> request = new GetRequest(QNetworkRequest(server.url()), &m_manager);
        request->setDataSink(&sink);
        request->setSuppressErrors(true);
        connect(request, &Request::finished, this, [request] { delete request; });
        QTRY_VERIFY(!request);
    }
}

void tst_Request::managerDies()
{
    HttpTestServer server(HttpTestAnswer::silence());
    auto manager = std::make_unique<QNetworkAccessManager>();
    Get get(server.url(), manager.get());
    QTRY_COMPARE(server.heldCount(), 1);
    manager.reset();
    QCOMPARE(get.finishedCount, 0);
    QVERIFY(get.ended());
    QCOMPARE(get.code, 0);
}

void tst_Request::nothingToSendWith()
{
    Get noManager(QUrl("http://127.0.0.1/"), nullptr);
    Get noHttp(QUrl("file:///etc/hostname"), &m_manager);
    Get noUrl(QUrl(), &m_manager);
    QCOMPARE(noManager.finishedCount + noHttp.finishedCount + noUrl.finishedCount, 0);
    for (Get *get : {&noManager, &noHttp, &noUrl}) {
        QVERIFY(get->ended());
        QCOMPARE(get->code, 0);
        QCOMPARE(get->bytes, QByteArray());
    }
}

void tst_Request::logsFailuresUnlessSuppressed()
{
    HttpTestServer server(HttpTestAnswer::of(503));
    QUrl url = server.url("/path");
    QTest::ignoreMessage(
        QtWarningMsg,
        qPrintable(QString("Request for \"%1\" failed with code 503").arg(url.toString())));
    url.setUserInfo("user:password");
    auto *request = new GetRequest(QNetworkRequest(url), &m_manager);
    QSignalSpy spy(request, &Request::finished);
    QVERIFY(spy.wait(60000));
}

void tst_Request::manyAtOnceLeaveNothingBehind()
{
    HttpTestServer server([](const HttpTestRequest &request) {
        return request.target.endsWith("to") ? HttpTestAnswer::ok(request.target)
                                             : HttpTestAnswer::redirect(request.target + "/to");
    });
    const auto objects = [&] { return m_manager.findChildren<QObject *>().size(); };
    int before = 0;
    for (int count : {10, 300}) {
        Gets gets(server, count, &m_manager);
        QVERIFY(gets.ended());
        for (int i = 0; i < count; ++i)
            QCOMPARE(gets.all[size_t(i)]->bytes, "/" + QByteArray::number(i) + "/to");
        before = count == 10 ? objects() : before;
    }
    QTRY_COMPARE(objects(), before);
}

void tst_Request::conditionsMayBeMet()
{
    HttpTestServer server(HttpTestAnswer::raw(
        "HTTP/1.1 304 Not Modified\r\nContent-Length: 9\r\nETag: \"a\"\r\n\r\n"));
    for (const char *condition : {"If-None-Match", "If-Modified-Since"}) {
        QNetworkRequest request(server.url());
        request.setRawHeader(condition, "\"a\"");
        Get get(request, &m_manager);
        QVERIFY(get.ended());
        QCOMPARE(get.code, 304);
    }
}

// Proxy, cookies, and what a carrier adds; the environment has no say.
void tst_Request::managerHasItsSay()
{
    class Manager : public QNetworkAccessManager, public RequestCarrier
    {
    public:
        void prepare(QNetworkRequest &request) override { request.setRawHeader("X-Own", "1"); }
    };
    qputenv("http_proxy", "http://127.0.0.1:1");
    HttpTestServer server(HttpTestAnswer::of(200, "a", "Set-Cookie: a=1\r\nSet-Cookie: b=2\r\n"));
    Manager manager;
    for (const auto type :
         {QNetworkProxy::NoProxy, QNetworkProxy::HttpProxy, QNetworkProxy::FtpCachingProxy}) {
        manager.setProxy(QNetworkProxy(type, "127.0.0.1", server.serverPort()));
        const bool isProxied = type == QNetworkProxy::HttpProxy;
        Get get(isProxied ? QUrl("http://nowhere.invalid/") : server.url(), &manager);
        QVERIFY(get.ended());
        QCOMPARE(get.code, type == QNetworkProxy::FtpCachingProxy ? 0 : 200);
    }
    Get again(server.url(), &m_manager);
    QVERIFY(again.ended());
    QCOMPARE(server.requestCount(), 3);
    QCOMPARE(server.requests().at(1).target, QByteArray("http://nowhere.invalid/"));
    QCOMPARE(server.requests().at(1).headers.value("x-own"), QByteArray("1"));
    manager.setProxy(QNetworkProxy::NoProxy);
    Get withCookies(server.url(), &manager);
    QVERIFY(withCookies.ended());
    QCOMPARE(server.requests().last().headers.value("cookie"), QByteArray("a=1; b=2"));
    qunsetenv("http_proxy");
}

void tst_Request::managerIsAskedForCredentials_data()
{
    Columns<int, QByteArray, QByteArray>("status", "challenge", "answer")
        .row("server", 401, "WWW-Authenticate", "authorization")
        .row("proxy", 407, "Proxy-Authenticate", "proxy-authorization");
}

void tst_Request::managerIsAskedForCredentials()
{
    QFETCH(int, status);
    QFETCH(QByteArray, challenge);
    QFETCH(QByteArray, answer);
    HttpTestServer server([&](const HttpTestRequest &request) {
        return request.headers.value(answer) == "Basic YTpi"
                   ? HttpTestAnswer::ok(text)
                   : HttpTestAnswer::of(status, "who?", challenge + ": Basic realm=\"r\"\r\n");
    });
    QNetworkAccessManager manager;
    if (status == 407)
        manager.setProxy(QNetworkProxy(QNetworkProxy::HttpProxy, "127.0.0.1", server.serverPort()));
    QStringList passwords{"wrong", "wrong", "b"};
    const auto give = [&](const auto &, QAuthenticator *authenticator) {
        QCOMPARE(authenticator->realm(), QString("r"));
        authenticator->setUser("a");
        authenticator->setPassword(passwords.takeFirst());
    };
    connect(&manager, &QNetworkAccessManager::authenticationRequired, this, give);
    connect(&manager, &QNetworkAccessManager::proxyAuthenticationRequired, this, give);
    const auto codeOf = [&] {
        Get get(server.url(), &manager);
        return get.ended() ? get.code : -1;
    };
    QCOMPARE(codeOf(), status); // wrong, and the same again
    QCOMPARE(codeOf(), 200);
    QCOMPARE(codeOf(), 200); // without being asked
    QCOMPARE(server.requestCount(), 5);
}

/// Another process, with requests under way to a server that keeps silent, to none, and to a name
/// that may take time to resolve, ends in one of the ways in which a process does.
static int leave(int argc, char **argv)
{
    auto app = std::make_unique<QCoreApplication>(argc, argv);
    QNetworkAccessManager manager;
    HttpTestServer server(HttpTestAnswer::silence());
    for (int i = 0; i < 10; ++i)
        new GetRequest(QNetworkRequest(server.url()), &manager, &manager);
    new GetRequest(QNetworkRequest(QUrl("http://slow.invalid/")), &manager, &manager);
    const auto inTheLoop = [&](const std::function<void()> &end) {
        QTimer waiting;
        QObject::connect(&waiting, &QTimer::timeout, [&] {
            if (server.heldCount() == 6)
                end();
        });
        waiting.start(1);
        app->exec();
    };
    const QByteArray way = argv[2];
    if (way == "exit")
        inTheLoop([] { std::exit(0); });
    inTheLoop([&] { app->quit(); });
    if (way == "application first")
        app.reset();
    return 0;
}

void tst_Request::endsWithTheProcess()
{
    for (const char *way : {"exit", "return", "application first"}) {
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedChannels);
        process.start(QCoreApplication::applicationFilePath(), {"leave", way});
        QVERIFY(process.waitForFinished(20000)); // a silent server is given 30 s
        QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0, way);
    }
}

int main(int argc, char **argv)
{
    if (argc == 3 && qstrcmp(argv[1], "leave") == 0)
        return leave(argc, argv);
    QCoreApplication app(argc, argv);
    tst_Request test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_request.moc"

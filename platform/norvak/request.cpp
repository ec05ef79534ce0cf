// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/request.h"

#include "norvak/httprules.h"
#include "norvak/origin.h"
#include "norvak/servertraffic.h"

#include <QIODevice>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPointer>
#include <QTimer>

#include <array>

namespace nk {

Q_LOGGING_CATEGORY(lcRequest, "norvak.request", QtInfoMsg)

namespace {

constexpr std::chrono::milliseconds defaultTransferTimeout = std::chrono::seconds(30);
constexpr int maxRedirects = 10;
constexpr qint64 replyBufferSize = 1024 * 1024;
constexpr int pieceSize = 64 * 1024;
// A server that never ends would take all memory; a QByteArray ends the process at 2 GiB.
constexpr int defaultMaximumBodySize = 1024 * 1024 * 1024;
// The time-out counts ticks rather than time: a blocked event loop or a machine that slept misses
// ticks, and so isn't taken for a silent server.
constexpr int ticksPerTimeout = 8;

QNetworkRequest prepared(QNetworkRequest request)
{
    if (!request.hasRawHeader("Accept-Encoding"))
        request.setRawHeader("Accept-Encoding", "identity");
    // Else Qt asks for "no-cache", for which servers and caches answer in full what was to be a
    // 304.
    if (!request.hasRawHeader("Cache-Control"))
        request.setRawHeader("Cache-Control", "max-age=0");
    // Redirects are followed here, not in Qt, which would send Authorization on to any host.
    request.setAttribute(
        QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setAttribute(
        QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    // Qt's time-out runs while a request still waits for a free connection.
    request.setTransferTimeout(0);
    return request;
}

bool isHttp(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

bool isFine(int code)
{
    return (code >= 200 && code < 300) || code == 304;
}

int statusOf(const QNetworkReply &reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

QByteArray headerOf(const QNetworkReply &reply, const char *name)
{
    return reply.hasRawHeader(name) ? reply.rawHeader(name) : QByteArray();
}

// Errors that Qt derives from the status of a complete answer, as against those of the transport.
bool isServersVerdict(QNetworkReply::NetworkError error, int status)
{
    switch (error) {
    case QNetworkReply::NoError:
        return true;
    case QNetworkReply::ProxyAuthenticationRequiredError:
        return status == 407;
    case QNetworkReply::ProtocolInvalidOperationError:
        return status >= 400;
    default:
        return status >= 400
               && ((error > QNetworkReply::UnknownProxyError
                    && error < QNetworkReply::ProtocolUnknownError)
                   || error > QNetworkReply::ProtocolFailure);
    }
}

int completeStatus(const QNetworkReply &reply, qint64 received)
{
    const int status = statusOf(reply);
    const bool complete = isServersVerdict(reply.error(), status)
                          && http::isWholeBody(
                              {status, headerOf(reply, "Transfer-Encoding"),
                               headerOf(reply, "Content-Length"), received});
    return complete ? status : 0;
}

} // namespace

struct RequestPrivate
{
    Request *q = nullptr;
    QNetworkRequest request; ///< of the current hop
    QPointer<QNetworkAccessManager> manager;
    QPointer<QNetworkReply> reply;
    QPointer<QIODevice> sink;
    bool hasSink = false;
    bool suppressErrors = false;
    bool done = false;
    int responseCode = 0;
    int redirects = 0;
    QByteArray body;
    int maximumBodySize = defaultMaximumBodySize;
    qint64 received = 0;    ///< body bytes of the current hop
    bool unlimited = false; ///< reads as fast as the network, sink or not
    bool answered = false;  ///< the current hop's headers are there
    ServerTraffic::Counter traffic;
    QTimer *ticker = nullptr;
    quint64 progressAtTick = 0;
    int silentTicks = 0;

    explicit RequestPrivate(Request *owner);
    void start();
    void send();
    void headersArrived();
    void limitReading();
    bool drain();
    bool deliver(const char *data, int size);
    void replyFinished();
    void followRedirect(const QUrl &target);
    void tick();
    quint64 progress() const { return answered ? quint64(received) + 1 : *traffic; }
    void setTimeout(std::chrono::milliseconds timeout);
    void dropReply();
    void fail();
    void failLater();
    void finish(int code);
};

RequestPrivate::RequestPrivate(Request *owner)
    : q(owner)
{}

void RequestPrivate::start()
{
    const int requested = request.transferTimeout();
    request = prepared(request);
    ticker = new QTimer(q);
    QObject::connect(ticker, &QTimer::timeout, q, [this] { tick(); });
    setTimeout(requested > 0 ? std::chrono::milliseconds(requested) : defaultTransferTimeout);
    if (manager && isHttp(request.url()))
        send();
    else
        failLater();
}

void RequestPrivate::send()
{
    received = 0;
    answered = false;
    silentTicks = 0;
    traffic = ServerTraffic::counter(manager, request.url());
    progressAtTick = progress();
    reply = manager->get(request);
    limitReading();
    QObject::connect(reply, &QNetworkReply::metaDataChanged, q, [this] { headersArrived(); });
    QObject::connect(reply, &QNetworkReply::readyRead, q, [this] { drain(); });
    QObject::connect(reply, &QNetworkReply::finished, q, [this] { replyFinished(); });
    // The manager takes its replies with it, without a word from them.
    QObject::connect(reply, &QObject::destroyed, q, [this] { failLater(); });
}

// A sink may be slower than the network, so that its body is held back by a limit on what Qt reads.
// But with a limit, Qt 5.15 takes a connection that broke inside the line of a chunk's size for the
// end of a chunked body. Such an answer is dropped before its body is looked at, and asked for
// without a limit.
void RequestPrivate::headersArrived()
{
    if (answered) {
        // Qt sends a request again whose connection broke at a certain moment, and would join what
        // came before to what comes now.
        fail();
        return;
    }
    answered = true;
    ++*traffic;
    const bool chunked = reply->hasRawHeader("Transfer-Encoding");
    if (chunked && reply->readBufferSize() > 0 && !http::isRedirect(statusOf(*reply))) {
        unlimited = true;
        dropReply();
        send();
    }
}

void RequestPrivate::limitReading()
{
    if (reply && hasSink && !unlimited)
        reply->setReadBufferSize(replyBufferSize);
}

// False if the exchange ended here, and the request perhaps with it.
bool RequestPrivate::drain()
{
    const bool passOver = http::isRedirect(statusOf(*reply));
    std::array<char, pieceSize> piece;
    qint64 size = 0;
    while ((size = reply->read(piece.data(), piece.size())) > 0) {
        received += size;
        *traffic += quint64(size);
        if (!passOver && !deliver(piece.data(), int(size))) {
            fail();
            return false;
        }
    }
    return true;
}

bool RequestPrivate::deliver(const char *data, int size)
{
    if (hasSink)
        return sink && sink->write(data, size) == size;
    if (size > maximumBodySize - body.size()) {
        body.clear();
        return false;
    }
    body.append(data, size);
    return true;
}

void RequestPrivate::replyFinished()
{
    if (!drain())
        return;
    const QByteArray location = headerOf(*reply, "Location");
    if (http::isRedirect(statusOf(*reply)) && !location.isEmpty())
        followRedirect(request.url().resolved(QUrl::fromEncoded(location)));
    else if (hasSink && !sink)
        fail();
    else
        finish(completeStatus(*reply, received));
}

void RequestPrivate::followRedirect(const QUrl &target)
{
    const bool allowed = reply->error() == QNetworkReply::NoError && redirects < maxRedirects
                         && manager && http::isSafeRedirect(request.url(), target);
    if (!allowed) {
        fail();
        return;
    }
    ++redirects;
    if (!sameOrigin(request.url(), target)) {
        for (const char *secret : {"Authorization", "Cookie", "Proxy-Authorization"})
            request.setRawHeader(secret, QByteArray());
    }
    request.setUrl(target);
    dropReply();
    send();
}

void RequestPrivate::tick()
{
    const quint64 now = progress();
    silentTicks = now == progressAtTick ? silentTicks + 1 : 0;
    progressAtTick = now;
    if (silentTicks >= ticksPerTimeout)
        fail();
}

void RequestPrivate::setTimeout(std::chrono::milliseconds timeout)
{
    silentTicks = 0;
    if (timeout.count() > 0 && !done)
        ticker->start(std::max(timeout / ticksPerTimeout, std::chrono::milliseconds(1)));
    else
        ticker->stop();
}

// abort() emits finished() inside the call, and the call may come from inside a signal of the
// reply: so first every connection goes, and the reply itself goes later.
void RequestPrivate::dropReply()
{
    if (!reply)
        return;
    reply->disconnect(q);
    if (reply->isRunning())
        reply->abort();
    reply->deleteLater();
}

void RequestPrivate::fail()
{
    if (reply) {
        reply->disconnect(q);
        if (reply->isRunning())
            reply->abort();
    }
    finish(0);
}

void RequestPrivate::failLater()
{
    QMetaObject::invokeMethod(
        q, [this] { finish(0); }, Qt::QueuedConnection);
}

void RequestPrivate::finish(int code)
{
    if (done)
        return;
    done = true;
    ticker->stop();
    responseCode = code;
    if (!suppressErrors && !isFine(code))
        qCWarning(lcRequest) << "Request for" << request.url().toString(QUrl::RemoveUserInfo)
                             << "failed with code" << code;
    q->deleteLater();
    Q_EMIT q->finished(); // a slot may delete the request: nothing comes after
}

Request::Request(const QNetworkRequest &request, QNetworkAccessManager *manager, QObject *parent)
    : QObject(parent)
    , d(new RequestPrivate(this))
{
    d->request = request;
    d->manager = manager;
    d->start();
}

Request::~Request()
{
    d->dropReply();
}

void Request::setDataSink(QIODevice *sink)
{
    d->sink = sink;
    d->hasSink = sink != nullptr;
    d->limitReading();
}

QIODevice *Request::dataSink() const
{
    return d->sink;
}

void Request::setSuppressErrors(bool suppress)
{
    d->suppressErrors = suppress;
}

void Request::setTransferTimeout(std::chrono::milliseconds timeout)
{
    d->setTimeout(timeout);
}

void Request::setMaximumBodySize(int bytes)
{
    d->maximumBodySize = bytes;
}

int Request::responseCode() const
{
    return d->responseCode;
}

QNetworkReply *Request::reply() const
{
    return d->reply;
}

QByteArray Request::rawResponse() const
{
    return d->body;
}

GetRequest::GetRequest(
    const QNetworkRequest &request, QNetworkAccessManager *manager, QObject *parent)
    : Request(request, manager, parent)
{}

} // namespace nk

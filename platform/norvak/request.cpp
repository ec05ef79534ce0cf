// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/request.h"

#include "norvak/httpreply.h"
#include "norvak/httprules.h"
#include "norvak/managersay.h"
#include "norvak/origin.h"
#include "norvak/patience.h"
#include "norvak/requestcarrier.h"
#include "norvak/transferthread.h"

#include <QCoreApplication>
#include <QEvent>
#include <QIODevice>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QPointer>

namespace nk {

using http::Fault;

Q_LOGGING_CATEGORY(lcRequest, "norvak.request", QtInfoMsg)

namespace {

constexpr std::chrono::milliseconds defaultTransferTimeout = std::chrono::seconds(30);
constexpr int defaultLowestRate = 100;
constexpr std::chrono::milliseconds defaultRateWindow = std::chrono::seconds(30);
constexpr int maxRedirects = 10;
constexpr int pieceSize = 64 * 1024;
// A server that never ends would take all memory; a QByteArray ends the process at 2 GiB.
constexpr int defaultMaximumBodySize = 1024 * 1024 * 1024;

bool isHttp(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
}

bool isFine(int code)
{
    return (code >= 200 && code < 300) || code == 304;
}

} // namespace

/// Hears of the transfer's news by events.
struct RequestPrivate : public QObject
{
    Request *q = nullptr;
    QNetworkRequest request; ///< of the current hop
    QPointer<QNetworkAccessManager> manager;
    QPointer<HttpReply> reply;
    std::shared_ptr<http::Transfer> transfer; ///< of the current hop; null when none runs
    QNetworkProxy proxy;                      ///< of the current hop
    http::Head head;                          ///< of the current hop, empty until it is there
    QPointer<QIODevice> sink;
    bool hasSink = false;
    bool suppressErrors = false;
    bool isDelivering = false; ///< inside the sink, which may run an event loop
    bool hasMoreNews = false;  ///< came meanwhile
    bool done = false;
    int responseCode = 0;
    int redirects = 0;
    QByteArray body;
    int maximumBodySize = defaultMaximumBodySize;
    qint64 received = 0; ///< body bytes of the current hop
    Patience patience;

    RequestPrivate(Request *owner, const QNetworkRequest &what, QNetworkAccessManager *carrier);
    bool event(QEvent *event) override;
    void start();
    void send();
    void dropTransfer();

    void hear(const http::Transfer::News &news);
    void takeHead(const http::Head &arrived);
    Fault faultOfLength() const;
    bool deliver(const QByteArray &bytes);
    void hopEnded(Fault fault, const QString &detail);

    bool authenticate(int challenge);
    void followRedirect(const QUrl &target);

    void fail(Fault fault);
    void failLater(Fault fault);
    void finish(int code, Fault fault, const QString &detail = {});
    http::Transfer::Progress progress() const;
};

RequestPrivate::RequestPrivate(
    Request *owner, const QNetworkRequest &what, QNetworkAccessManager *carrier)
    : q(owner)
    , request(http::withDefaults(what))
    , manager(carrier)
    , reply(new HttpReply(what, owner))
    , patience([this] { return progress(); }, owner)
{}

void RequestPrivate::start()
{
    reply->setCancel([this] { fail(Fault::Cancelled); });
    connect(reply, &QObject::destroyed, this, [this] { failLater(Fault::Cancelled); });
    connect(&patience, &Patience::exhausted, this, [this] { fail(Fault::TimedOut); });
    int silence = request.transferTimeout();
    if (silence <= 0 && manager)
        silence = manager->transferTimeout();
    patience.setSilence(silence > 0 ? std::chrono::milliseconds(silence) : defaultTransferTimeout);
    patience.setLowestRate(defaultLowestRate, defaultRateWindow);
    if (!manager) {
        failLater(Fault::NoManager);
        return;
    }
    connect(manager, &QObject::destroyed, this, [this] { failLater(Fault::NoManager); });
    if (auto *carrier = dynamic_cast<RequestCarrier *>(manager.data()))
        carrier->started(*q);
    if (isHttp(request.url()) && !request.url().host().isEmpty())
        send();
    else
        failLater(Fault::NotHttp);
}

void RequestPrivate::send()
{
    QNetworkRequest hop = http::withKnown(request, manager);
    if (auto *carrier = dynamic_cast<RequestCarrier *>(manager.data()))
        carrier->prepare(hop);
    proxy = http::proxyFor(hop.url(), manager);
    auto order = http::makeOrder(hop, proxy);
    if (!order || proxy.type() == QNetworkProxy::DefaultProxy) {
        failLater(order ? Fault::NoProxy : Fault::Malformed);
        return;
    }
    received = 0;
    head = {};
    body.clear();
    patience.startOver();
    transfer = std::make_shared<http::Transfer>(std::move(*order), this);
    http::TransferThread::start(transfer);
}

void RequestPrivate::dropTransfer()
{
    if (const auto dropped = std::exchange(transfer, nullptr)) {
        dropped->abandon();
        http::TransferThread::cancel(dropped);
    }
}

http::Transfer::Progress RequestPrivate::progress() const
{
    return transfer ? transfer->progress() : http::Transfer::Progress();
}

bool RequestPrivate::event(QEvent *event)
{
    if (event->type() != QEvent::User)
        return QObject::event(event);
    if (isDelivering)
        hasMoreNews = true;
    else if (transfer)
        hear(transfer->takeNews());
    return true;
}

// The signals come last: each may end the request, or run an event loop in which more news come.
void RequestPrivate::hear(const http::Transfer::News &news)
{
    const QPointer<QObject> alive(this);
    if (news.head)
        takeHead(*news.head);
    if (const Fault fault = faultOfLength(); fault != Fault::None) {
        fail(fault);
        return;
    }
    received += news.body.size();
    if (!deliver(news.body)) {
        fail(hasSink ? Fault::SinkRefused : Fault::TooLarge);
        return;
    }
    if (news.isHeldBack && transfer) // the sink may have had the request cancelled
        http::TransferThread::resume(transfer);
    if (news.hasEnded)
        transfer = nullptr;
    if (news.head && reply)
        Q_EMIT reply->metaDataChanged();
    if (alive && !news.body.isEmpty() && reply)
        Q_EMIT reply->downloadProgress(received, head.length());
    if (alive && news.hasEnded && !done)
        hopEnded(news.fault, news.detail);
}

void RequestPrivate::takeHead(const http::Head &arrived)
{
    head = arrived;
    if (manager)
        http::keepCookies(request, *manager, head);
    if (reply)
        reply->setHead(request.url(), head);
}

// What is too large by its own word isn't waited for.
Fault RequestPrivate::faultOfLength() const
{
    const bool counts = !hasSink && head.status >= 200 && head.status < 300;
    return counts && head.length() > maximumBodySize ? Fault::TooLarge : Fault::None;
}

bool RequestPrivate::deliver(const QByteArray &bytes)
{
    if (bytes.isEmpty() || http::isRedirect(head.status))
        return true;
    if (!hasSink) {
        if (bytes.size() > maximumBodySize - body.size()) {
            body.clear();
            return false;
        }
        body.append(bytes);
        return true;
    }
    isDelivering = true;
    bool isWritten = true;
    for (int at = 0; isWritten && at < bytes.size(); at += pieceSize) {
        const int size = qMin(pieceSize, bytes.size() - at);
        isWritten = sink && sink->write(bytes.constData() + at, size) == size;
    }
    isDelivering = false;
    if (std::exchange(hasMoreNews, false))
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    return isWritten;
}

void RequestPrivate::hopEnded(Fault fault, const QString &detail)
{
    const bool atProxy = fault == Fault::ProxyAuthentication || head.status == 407;
    const bool isChallenge = atProxy || (fault == Fault::None && head.status == 401);
    if (isChallenge && authenticate(atProxy ? 407 : 401))
        return;
    if (done)
        return;
    const QByteArray location = head.value("Location");
    if (fault != Fault::None)
        finish(0, fault, detail);
    else if (http::isRedirect(head.status) && !location.isEmpty())
        followRedirect(request.url().resolved(QUrl::fromEncoded(location)));
    else if (hasSink && !sink)
        fail(Fault::SinkRefused);
    else
        finish(head.status, Fault::None);
}

// True if the request goes on, or is no more. A listener may ask a person, in an event loop.
bool RequestPrivate::authenticate(int challenge)
{
    if (!manager || !reply)
        return false;
    const QPointer<QObject> alive(this);
    const bool isAnswered = challenge == 407 ? http::askForProxy(manager, proxy, head)
                                             : http::askForServer(manager, reply, head);
    if (!alive)
        return true;
    if (!isAnswered || done || !manager)
        return false;
    if (challenge == 401)
        request.setRawHeader("Authorization", QByteArray()); // was refused; there is another
    send();
    return true;
}

void RequestPrivate::followRedirect(const QUrl &target)
{
    if (!manager || redirects >= maxRedirects) {
        fail(manager ? Fault::TooManyRedirects : Fault::NoManager);
        return;
    }
    if (!http::isSafeRedirect(request.url(), target)) {
        fail(Fault::UnsafeRedirect);
        return;
    }
    ++redirects;
    if (!sameOrigin(request.url(), target)) {
        for (const char *secret : {"Authorization", "Cookie", "Proxy-Authorization"})
            request.setRawHeader(secret, QByteArray());
    }
    request.setUrl(target);
    send();
}

void RequestPrivate::fail(Fault fault)
{
    finish(0, fault);
}

void RequestPrivate::failLater(Fault fault)
{
    QMetaObject::invokeMethod(
        this, [this, fault] { fail(fault); }, Qt::QueuedConnection);
}

void RequestPrivate::finish(int code, Fault fault, const QString &detail)
{
    if (done)
        return;
    done = true;
    patience.stop();
    dropTransfer();
    responseCode = code;
    if (!suppressErrors && !isFine(code))
        qCWarning(lcRequest) << "Request for" << request.url().toString(QUrl::RemoveUserInfo)
                             << "failed with code" << code;
    q->deleteLater();
    const QPointer<Request> alive(q); // a slot may delete the request
    const QPointer<HttpReply> concluded(reply);
    const QPointer<QNetworkAccessManager> carrier(manager);
    if (concluded)
        concluded->conclude(request.url(), code, fault, detail);
    if (concluded && carrier)
        Q_EMIT carrier->finished(concluded);
    if (alive)
        Q_EMIT alive->finished();
}

Request::Request(const QNetworkRequest &request, QNetworkAccessManager *manager, QObject *parent)
    : QObject(parent)
    , d(new RequestPrivate(this, request, manager))
{
    d->start();
}

Request::~Request()
{
    d->dropTransfer();
    if (d->reply)
        d->reply->setCancel({});
}

void Request::setDataSink(QIODevice *sink)
{
    d->sink = sink;
    d->hasSink = sink != nullptr;
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
    d->patience.setSilence(timeout);
}

void Request::setLowestRate(int bytesPerSecond, std::chrono::milliseconds window)
{
    d->patience.setLowestRate(bytesPerSecond, window);
}

void Request::setTotalTimeout(std::chrono::milliseconds timeout)
{
    d->patience.setTotal(timeout);
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

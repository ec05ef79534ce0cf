// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/managersay.h"

#include "norvak/credentials.h"

#include <QAuthenticator>
#include <QNetworkAccessManager>
#include <QNetworkCookie>
#include <QNetworkCookieJar>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QPointer>
#include <QSslCertificate>
#include <QSslConfiguration>

#include <algorithm>

namespace nk::http {

namespace {

bool isAutomatic(const QNetworkRequest &request, QNetworkRequest::Attribute attribute)
{
    return request.attribute(attribute, QNetworkRequest::Automatic).toInt()
           == QNetworkRequest::Automatic;
}

bool isSpoken(const QNetworkProxy &proxy, const QUrl &url)
{
    switch (proxy.type()) {
    case QNetworkProxy::NoProxy:
    case QNetworkProxy::HttpProxy:
    case QNetworkProxy::Socks5Proxy:
        return true;
    case QNetworkProxy::HttpCachingProxy:
        return url.scheme() == QLatin1String("http");
    default:
        return false;
    }
}

// curl's words for it: "socks5h" has the proxy resolve names, as Qt has it.
QByteArray urlOf(const QNetworkProxy &proxy)
{
    if (proxy.type() == QNetworkProxy::NoProxy)
        return {};
    QUrl url;
    url.setScheme(
        proxy.type() == QNetworkProxy::Socks5Proxy ? QStringLiteral("socks5h")
                                                   : QStringLiteral("http"));
    url.setHost(proxy.hostName());
    url.setPort(proxy.port());
    return url.toEncoded();
}

// Turning a hundred of them into text for each request would cost more than the request.
QByteArray asPem(const QList<QSslCertificate> &certificates)
{
    thread_local QList<QSslCertificate> last;
    thread_local QByteArray text;
    if (certificates != last) {
        last = certificates;
        text.clear();
        for (const QSslCertificate &certificate : certificates)
            text += certificate.toPem();
    }
    return text;
}

void orderTls(const QSslConfiguration &configuration, TransferOrder *order)
{
    order->authorities = asPem(configuration.caCertificates());
    order->verifiesPeer = configuration.peerVerifyMode() != QSslSocket::VerifyNone
                          && configuration.peerVerifyMode() != QSslSocket::QueryPeer;
    order->needsTls13 = configuration.protocol() == QSsl::TlsV1_3
                        || configuration.protocol() == QSsl::TlsV1_3OrLater;
}

bool hasBreak(const QByteArray &text)
{
    return text.contains('\n') || text.contains('\r') || text.contains('\0');
}

void setDefault(QNetworkRequest *request, const char *header, const QByteArray &value)
{
    if (!request->hasRawHeader(header))
        request->setRawHeader(header, value);
}

QByteArray basic(const QString &user, const QString &password)
{
    return "Basic " + (user + QLatin1Char(':') + password).toUtf8().toBase64();
}

} // namespace

QNetworkRequest withDefaults(QNetworkRequest request)
{
    setDefault(&request, "Accept-Encoding", "identity");
    setDefault(&request, "Cache-Control", "max-age=0"); // caches ask the server, and may get a 304
    setDefault(&request, "User-Agent", "Mozilla/5.0");  // as Qt's own requests
    const QUrl url = request.url();
    if (!url.userName().isEmpty())
        setDefault(
            &request, "Authorization",
            basic(url.userName(QUrl::FullyDecoded), url.password(QUrl::FullyDecoded)));
    return request;
}

QNetworkRequest withKnown(QNetworkRequest request, QNetworkAccessManager *manager)
{
    if (manager->cookieJar() && isAutomatic(request, QNetworkRequest::CookieLoadControlAttribute)) {
        const auto cookies = manager->cookieJar()->cookiesForUrl(request.url());
        if (!cookies.isEmpty())
            request.setHeader(QNetworkRequest::CookieHeader, QVariant::fromValue(cookies));
    }
    if (const auto known = Credentials::of(manager).find(Credentials::keyOf(request.url())))
        setDefault(&request, "Authorization", basic(known->user, known->password));
    return request;
}

void keepCookies(
    const QNetworkRequest &request, const QNetworkAccessManager &manager, const Head &head)
{
    if (!manager.cookieJar() || !isAutomatic(request, QNetworkRequest::CookieSaveControlAttribute))
        return;
    QList<QNetworkCookie> cookies;
    for (const auto &header : head.headers) {
        if (qstricmp(header.first.constData(), "Set-Cookie") == 0)
            cookies += QNetworkCookie::parseCookies(header.second);
    }
    if (!cookies.isEmpty())
        manager.cookieJar()->setCookiesFromUrl(cookies, request.url());
}

QNetworkProxy proxyFor(const QUrl &url, QNetworkAccessManager *manager)
{
    const QNetworkProxyQuery query(url);
    QList<QNetworkProxy> chosen{manager->proxy()};
    if (manager->proxyFactory())
        chosen = manager->proxyFactory()->queryProxy(query);
    else if (manager->proxy().type() == QNetworkProxy::DefaultProxy)
        chosen = QNetworkProxyFactory::proxyForQuery(query);
    if (chosen.isEmpty())
        return QNetworkProxy(QNetworkProxy::NoProxy);
    const auto spoken = std::find_if(chosen.begin(), chosen.end(), [&](const QNetworkProxy &proxy) {
        return isSpoken(proxy, url);
    });
    if (spoken == chosen.end())
        return QNetworkProxy(QNetworkProxy::DefaultProxy);
    if (const auto known = Credentials::of(manager).find(Credentials::keyOf(*spoken))) {
        spoken->setUser(known->user);
        spoken->setPassword(known->password);
    }
    return *spoken;
}

std::optional<TransferOrder> makeOrder(const QNetworkRequest &request, const QNetworkProxy &proxy)
{
    TransferOrder order;
    order.url = request.url().toEncoded(QUrl::RemoveUserInfo | QUrl::RemoveFragment);
    order.origin = Credentials::keyOf(request.url()).toLatin1();
    order.isConditional =
        request.hasRawHeader("If-None-Match") || request.hasRawHeader("If-Modified-Since");
    const QList<QByteArray> names = request.rawHeaderList();
    for (const QByteArray &name : names) {
        const QByteArray value = request.rawHeader(name);
        if (hasBreak(name) || hasBreak(value))
            return {};
        order.headers.append(value.isEmpty() ? name + ";" : name + ": " + value);
    }
    order.proxy = urlOf(proxy);
    order.proxyUser = proxy.user().toUtf8();
    order.proxyPassword = proxy.password().toUtf8();
    if (request.url().scheme() == QLatin1String("https"))
        orderTls(request.sslConfiguration(), &order);
    return order;
}

bool askForServer(QNetworkAccessManager *manager, QNetworkReply *reply, const Head &head)
{
    const QByteArray realm = basicRealm(head.value("WWW-Authenticate"));
    if (realm.isNull())
        return false;
    const QPointer<QNetworkAccessManager> alive(manager);
    const QString key = Credentials::keyOf(reply->url());
    QAuthenticator given;
    given.setRealm(QString::fromLatin1(realm));
    Q_EMIT manager->authenticationRequired(reply, &given);
    return alive && Credentials::of(alive).keep(key, {given.user(), given.password()});
}

bool askForProxy(QNetworkAccessManager *manager, const QNetworkProxy &proxy, const Head &head)
{
    const QPointer<QNetworkAccessManager> alive(manager);
    const QString key = Credentials::keyOf(proxy);
    QAuthenticator given;
    given.setRealm(QString::fromLatin1(basicRealm(head.value("Proxy-Authenticate"))));
    Q_EMIT manager->proxyAuthenticationRequired(proxy, &given);
    return alive && Credentials::of(alive).keep(key, {given.user(), given.password()});
}

} // namespace nk::http

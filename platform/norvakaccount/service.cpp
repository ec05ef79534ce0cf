// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakaccount/service.h"

#include <norvak/origin.h>

#include <QNetworkAccessManager>
#include <QPointer>

namespace nk::account {

struct ServicePrivate
{
    Service *q;
    QUrl baseUrl;
    QPointer<QNetworkAccessManager> manager;
    QByteArray authorization; ///< value of the header, null without a token
    Service::Status status = Service::Disabled;
    QObject context{}; ///< of what calls back

    void setStatus(Service::Status value);
    void authorize(QNetworkRequest *request) const;
};

void ServicePrivate::setStatus(Service::Status value)
{
    status = value;
    Q_EMIT q->statusChanged();
}

// A request from createRequest() may have been turned to another URL since.
void ServicePrivate::authorize(QNetworkRequest *request) const
{
    const bool own = sameOrigin(baseUrl, request->url());
    if (own && !authorization.isNull())
        request->setRawHeader("Authorization", authorization);
    else if (!own && request->rawHeader("Authorization").startsWith("Bearer "))
        request->setRawHeader("Authorization", QByteArray());
}

static QUrl asDirectory(QUrl url)
{
    if (!url.path().endsWith(QLatin1Char('/')))
        url.setPath(url.path() + QLatin1Char('/'));
    return url;
}

Service::Service(
    const QString &uuid, const QUrl &baseUrl, QNetworkAccessManager *manager, QObject *parent)
    : Resource(uuid, parent)
    , d(new ServicePrivate{this, asDirectory(baseUrl), manager, {}})
{}

Service::~Service() = default;

void Service::enable()
{
    if (d->status == Connecting || d->status == Available)
        return;
    // Queued before the signal, whose receivers may delete the service.
    QMetaObject::invokeMethod(
        &d->context, [this] { d->setStatus(Available); }, Qt::QueuedConnection);
    d->setStatus(Connecting);
}

Service::Status Service::status() const
{
    return d->status;
}

QNetworkRequest Service::createRequest(const QUrl &relative) const
{
    QNetworkRequest request(d->baseUrl.resolved(relative));
    d->authorize(&request);
    return request;
}

nk::GetRequest *Service::getRequest(const QUrl &relative) const
{
    return getRequest(createRequest(relative));
}

nk::GetRequest *Service::getRequest(const QNetworkRequest &request) const
{
    QNetworkRequest authorized(request);
    d->authorize(&authorized);
    return new nk::GetRequest(authorized, d->manager);
}

void Service::setAccessToken(const QByteArray &token)
{
    const bool usable = !token.isEmpty() && !token.contains('\n') && !token.contains('\r');
    d->authorization = usable ? "Bearer " + token : QByteArray();
}

} // namespace nk::account

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <norvak/locations.h>
#include <norvak/request.h>
#include <norvakaccount/service.h>

namespace nk {

static QString &location()
{
    static QString path;
    return path;
}

QDir Locations::dataLocation()
{
    return QDir(location());
}

void Locations::setDataLocation(const QString &path)
{
    location() = path;
}

Request::Request(QObject *parent)
    : QObject(parent)
{
    QMetaObject::invokeMethod(
        this,
        [this] {
            Q_EMIT finished();
            deleteLater();
        },
        Qt::QueuedConnection);
}

} // namespace nk

namespace nk::account {

nk::GetRequest *Service::getRequest(const QUrl &relative) const
{
    return getRequest(createRequest(relative));
}

nk::GetRequest *Service::getRequest(const QNetworkRequest &request) const
{
    return new nk::GetRequest(request, nullptr);
}

} // namespace nk::account

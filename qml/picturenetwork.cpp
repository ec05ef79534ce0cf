// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "picturenetwork.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QVector>

namespace nk::pm {

namespace {

/// Gives each request to the loopback server a lane that no other one uses at the time. A lane
/// keeps one connection to a server, since only requests of the same name for the certificate share
/// any; plain HTTP has no other use for that name.
class PictureNetwork : public QNetworkAccessManager
{
public:
    using QNetworkAccessManager::QNetworkAccessManager;

protected:
    QNetworkReply *createRequest(
        Operation operation, const QNetworkRequest &request, QIODevice *body) override;

private:
    QNetworkReply *send(Operation operation, QNetworkRequest request, QIODevice *body, int lane);
    void leave(const QNetworkReply &reply, int lane);
    void endConnection(const QUrl &url, int lane);

    QVector<int> m_freeLanes;
    int m_nextLane = 0;
};

bool isForLoopback(const QUrl &url)
{
    return url.scheme() == QLatin1String("http") && url.host() == QLatin1String("localhost");
}

QNetworkReply *PictureNetwork::createRequest(
    Operation operation, const QNetworkRequest &request, QIODevice *body)
{
    if (!isForLoopback(request.url()))
        return QNetworkAccessManager::createRequest(operation, request, body);
    const int lane = m_freeLanes.isEmpty() ? m_nextLane++ : m_freeLanes.takeLast();
    QNetworkReply *reply = send(operation, request, body, lane);
    connect(reply, &QNetworkReply::finished, this, [this, reply, lane] { leave(*reply, lane); });
    return reply;
}

void PictureNetwork::leave(const QNetworkReply &reply, int lane)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status > 200 && isForLoopback(reply.url()))
        endConnection(reply.url(), lane);
    else
        m_freeLanes.append(lane);
}

QNetworkReply *PictureNetwork::send(
    Operation operation, QNetworkRequest request, QIODevice *body, int lane)
{
    request.setAttribute(QNetworkRequest::HttpPipeliningAllowedAttribute, false);
    request.setPeerVerifyName(QString::number(lane));
    return QNetworkAccessManager::createRequest(operation, request, body);
}

// The loopback server closes a connection whose answer was a failure when the next request comes.
// This is that request, instead of another picture's; the lane isn't used again.
void PictureNetwork::endConnection(const QUrl &url, int lane)
{
    QNetworkReply *reply = send(HeadOperation, QNetworkRequest(url), nullptr, lane);
    connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
}

} // namespace

QNetworkAccessManager *PictureNetworkFactory::create(QObject *parent)
{
    return new PictureNetwork(parent);
}

} // namespace nk::pm

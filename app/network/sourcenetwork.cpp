// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/sourcenetwork.h"

#include <QNetworkReply>
#include <norvak/origin.h>

namespace nk::pm::app {

namespace {

bool isRedirect(int status)
{
    return status >= 300 && status < 400 && status != 304;
}

QString faultOf(const QNetworkReply &reply, int status)
{
    if (status == 401 || status == 403)
        return SourceNetwork::tr("the server wants another user (status %1)").arg(status);
    if (status >= 400)
        return SourceNetwork::tr("the server answered with status %1").arg(status);
    if (reply.error() == QNetworkReply::OperationCanceledError)
        return SourceNetwork::tr("the server didn't answer in time");
    return reply.error() == QNetworkReply::NoError ? QString() : reply.errorString();
}

} // namespace

SourceNetwork::SourceNetwork(const QUrl &url, const QString &pollPath, QObject *parent)
    : QNetworkAccessManager(parent)
    , m_url(url.adjusted(QUrl::RemoveUserInfo))
    , m_pollPath(pollPath)
{
    const QString user = url.userName(QUrl::FullyDecoded);
    const QString password = url.password(QUrl::FullyDecoded);
    if (!user.isEmpty())
        m_authorization = "Basic " + (user + QLatin1Char(':') + password).toUtf8().toBase64();
}

QNetworkReply *SourceNetwork::createRequest(
    Operation operation, const QNetworkRequest &request, QIODevice *body)
{
    QNetworkRequest ownRequest(request);
    if (!m_authorization.isEmpty() && nk::sameOrigin(request.url(), m_url))
        ownRequest.setRawHeader("Authorization", m_authorization);
    QNetworkReply *reply = QNetworkAccessManager::createRequest(operation, ownRequest, body);
    const bool continues = !m_redirectTarget.isEmpty() && request.url() == m_redirectTarget;
    if (continues)
        m_redirectTarget.clear();
    if (continues || request.url().path().endsWith(m_pollPath))
        watchPoll(reply);
    return reply;
}

void SourceNetwork::watchPoll(QNetworkReply *reply)
{
    connect(reply, &QNetworkReply::downloadProgress, this, &SourceNetwork::pollProgress);
    connect(reply, &QNetworkReply::finished, this, [this, reply] { noteAnswer(*reply); });
}

void SourceNetwork::noteAnswer(const QNetworkReply &reply)
{
    const int status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (isRedirect(status))
        noteRedirect(reply.url().resolved(QUrl::fromEncoded(reply.rawHeader("Location"))));
    else
        notePoll(faultOf(reply, status));
}

// The request hears of this reply after us. By its next event loop turn it has gone on or given up.
void SourceNetwork::noteRedirect(const QUrl &target)
{
    m_redirectTarget = target;
    const auto giveUp = [this] {
        if (m_redirectTarget.isEmpty())
            return;
        m_redirectTarget.clear();
        notePoll(tr("the server redirects to an address that can't be followed"));
    };
    QMetaObject::invokeMethod(this, giveUp, Qt::QueuedConnection);
}

void SourceNetwork::notePoll(const QString &fault)
{
    m_hasPolled = true;
    m_fault = fault;
    if (m_fault.isEmpty())
        m_lastAnswer = QDateTime::currentDateTime();
    // The request hears of this reply after us, and the source after the request.
    QMetaObject::invokeMethod(this, &SourceNetwork::polled, Qt::QueuedConnection);
}

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/sourcenetwork.h"

#include <QNetworkReply>
#include <norvak/origin.h>
#include <norvak/request.h>

#include <chrono>

namespace nk::pm::app {

namespace {

// A gigabyte, the most that a poll may bring, over a slow line.
constexpr std::chrono::minutes wholePoll{30};

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

void SourceNetwork::prepare(QNetworkRequest &request)
{
    if (!m_authorization.isEmpty() && nk::sameOrigin(request.url(), m_url))
        request.setRawHeader("Authorization", m_authorization);
}

void SourceNetwork::started(nk::Request &request)
{
    if (!request.reply()->url().path().endsWith(m_pollPath))
        return;
    request.setTotalTimeout(wholePoll);
    const auto received = std::make_shared<qint64>(0);
    connect(
        request.reply(), &QNetworkReply::downloadProgress, this,
        [this, received](qint64 bytes, qint64 size) {
            *received = bytes;
            Q_EMIT pollProgress(bytes, size);
        });
    connect(&request, &nk::Request::finished, this, [this, received, &request] {
        notePoll(faultOf(request, *received));
    });
}

QString SourceNetwork::faultOf(const nk::Request &request, qint64 received) const
{
    const int status = request.responseCode();
    if (status == 304 || (status == 200 && received > 0))
        return {};
    if (status == 0)
        return request.reply()->errorString();
    if (status == 200)
        return tr("the server answered with nothing");
    if (status == 401 || status == 403)
        return tr("the server wants another user (status %1)").arg(status);
    return tr("the server answered with status %1").arg(status);
}

void SourceNetwork::notePoll(const QString &fault)
{
    m_hasPolled = true;
    m_fault = fault;
    if (m_fault.isEmpty())
        m_lastAnswer = QDateTime::currentDateTime();
    // The source hears of its request's end after us.
    QMetaObject::invokeMethod(this, &SourceNetwork::polled, Qt::QueuedConnection);
}

} // namespace nk::pm::app

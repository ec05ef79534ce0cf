// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/httpreply.h"

#include <QPointer>

namespace nk {

HttpReply::HttpReply(const QNetworkRequest &request, QObject *parent)
    : QNetworkReply(parent)
{
    setOperation(QNetworkAccessManager::GetOperation);
    setRequest(request);
    setUrl(request.url());
    open(ReadOnly | Unbuffered);
}

void HttpReply::setHead(const QUrl &url, const http::Head &head)
{
    const QList<QByteArray> before = rawHeaderList(); // of an answer that was gone on from
    for (const QByteArray &name : before)
        setRawHeader(name, QByteArray());
    for (const auto &header : head.headers) {
        const bool isCookie = qstricmp(header.first.constData(), "Set-Cookie") == 0;
        const QByteArray joint = isCookie ? "\n" : ", ";
        setRawHeader(
            header.first, hasRawHeader(header.first)
                              ? rawHeader(header.first) + joint + header.second
                              : header.second);
    }
    setUrl(url);
    setAttribute(QNetworkRequest::HttpStatusCodeAttribute, head.status);
    setAttribute(QNetworkRequest::HttpReasonPhraseAttribute, head.reason);
    setAttribute(
        QNetworkRequest::ConnectionEncryptedAttribute, url.scheme() == QLatin1String("https"));
}

void HttpReply::conclude(const QUrl &url, int status, http::Fault fault, const QString &detail)
{
    const NetworkError error = status > 0 ? http::errorOf(status) : http::errorOf(fault);
    QString text = status > 0 ? http::textOf(status) : http::textOf(fault);
    const bool needsDetail = fault == http::Fault::Untrusted || fault == http::Fault::Malformed;
    if (needsDetail && !detail.isEmpty())
        text += QStringLiteral(" (%1)").arg(detail);
    setUrl(url);
    setFinished(true);
    const QPointer<HttpReply> alive(this);
    if (error != NoError) {
        setError(error, text);
        Q_EMIT errorOccurred(error);
    }
    if (alive)
        Q_EMIT finished();
}

void HttpReply::abort()
{
    if (m_cancel && !isFinished())
        m_cancel();
}

qint64 HttpReply::readData(char *, qint64)
{
    return -1;
}

} // namespace nk

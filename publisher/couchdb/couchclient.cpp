// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "couchdb/couchclient.h"

#include "couchdb/couchdocuments.h"

#include <QBuffer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkReply>

#include <chrono>

namespace nk::pm::publisher {

namespace {

constexpr std::chrono::milliseconds transferTimeout = std::chrono::minutes(1);

// What the server says itself, or what kept it from saying anything.
QString describeFault(int status, const QByteArray &body, const QNetworkReply &reply)
{
    if (status == 0)
        return reply.errorString();
    if (status == 401 || status == 403) {
        return QStringLiteral("the server wants another user: name one with a password in the URL "
                              "or in NKPM_COUCHDB_USER and NKPM_COUCHDB_PASSWORD (status %1)")
            .arg(status);
    }
    const QString reason =
        QJsonDocument::fromJson(body).object().value(QLatin1String("reason")).toString();
    return reason.isEmpty() ? QStringLiteral("status %1").arg(status)
                            : QStringLiteral("%1 (status %2)").arg(reason).arg(status);
}

} // namespace

QJsonObject CouchClient::Answer::object() const
{
    return QJsonDocument::fromJson(body).object();
}

QJsonArray CouchClient::Answer::array() const
{
    return QJsonDocument::fromJson(body).array();
}

CouchClient::CouchClient(const QUrl &database)
    : m_database(database.adjusted(QUrl::RemoveUserInfo | QUrl::StripTrailingSlash))
{
    const QString user = database.userName(QUrl::FullyDecoded);
    const QString password = database.password(QUrl::FullyDecoded);
    if (!user.isEmpty())
        m_authorization = "Basic " + (user + u':' + password).toUtf8().toBase64();
}

QString CouchClient::path(const QString &segment)
{
    return u'/' + QString::fromLatin1(QUrl::toPercentEncoding(segment));
}

CouchClient::Answer CouchClient::get(const QString &path)
{
    QBuffer nothing;
    return send("GET", path, nothing, nullptr);
}

CouchClient::Answer CouchClient::put(const QString &path, const QJsonObject &document)
{
    // A database is made without a body.
    return sendJson(
        "PUT", path,
        path.isEmpty() ? QByteArray() : QJsonDocument(document).toJson(QJsonDocument::Compact));
}

CouchClient::Answer CouchClient::post(const QString &path, const QJsonObject &document)
{
    return sendJson("POST", path, QJsonDocument(document).toJson(QJsonDocument::Compact));
}

CouchClient::Answer CouchClient::putAttachment(const QString &path, QIODevice &content)
{
    return send("PUT", path, content, couchAttachmentType);
}

CouchClient::Answer CouchClient::sendJson(
    const QByteArray &verb, const QString &path, const QByteArray &json)
{
    QBuffer body;
    body.setData(json);
    return send(verb, path, body, "application/json");
}

CouchClient::Answer CouchClient::send(
    const QByteArray &verb, const QString &path, QIODevice &body, const char *type)
{
    QNetworkRequest request(QUrl(m_database.toString(QUrl::FullyEncoded) + path, QUrl::StrictMode));
    request.setTransferTimeout(int(transferTimeout.count()));
    if (type)
        request.setHeader(QNetworkRequest::ContentTypeHeader, QLatin1String(type));
    if (!m_authorization.isEmpty())
        request.setRawHeader("Authorization", m_authorization);
    if (!body.isOpen())
        body.open(QIODevice::ReadOnly);
    const std::unique_ptr<QNetworkReply> reply(m_manager.sendCustomRequest(request, verb, &body));
    QEventLoop loop;
    QObject::connect(reply.get(), &QNetworkReply::finished, &loop, &QEventLoop::quit);
    if (!reply->isFinished())
        loop.exec();

    Answer answer;
    answer.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    answer.body = reply->readAll();
    if (answer.status >= 300 || reply->error() != QNetworkReply::NoError)
        answer.fault = describeFault(answer.status, answer.body, *reply);
    else if (QJsonDocument::fromJson(answer.body).isNull()) // all that CouchDB says is JSON
        answer.fault = QStringLiteral("the server's answer broke off, or isn't a CouchDB's");
    return answer;
}

} // namespace nk::pm::publisher

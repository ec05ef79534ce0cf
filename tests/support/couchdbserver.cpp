// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/couchdbserver.h"

#include <QEventLoop>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QtTest>

namespace nk::pm::test {

namespace {

QString encoded(const QString &segment)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(segment));
}

QByteArray viewMapFunction()
{
    QFile file(QStringLiteral(NKPM_SOURCE_DIR "/publisher/couchdb/packages-map.js"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The view's map function is missing");
    return file.readAll();
}

} // namespace

CouchDBServer::CouchDBServer(Views views, const QString &credentials, int port)
    : m_credentials(credentials)
{
    QStringList arguments{
        NKPM_SOURCE_DIR "/tests/couchdb-server/server.js", "--views",
        views == StrongETag ? "strong" : "none", "--port", QString::number(port)};
    if (!credentials.isEmpty())
        arguments << QStringLiteral("--auth") << credentials;
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(QStringLiteral("node"), arguments);
    while (!m_process.canReadLine() && m_process.waitForReadyRead(60000)) {
    }
    m_url = QUrl(QJsonDocument::fromJson(m_process.readLine()).object().value("url").toString());
}

CouchDBServer::~CouchDBServer()
{
    m_process.terminate();
    if (!m_process.waitForFinished(10000))
        m_process.kill();
    m_process.waitForFinished();
}

QUrl CouchDBServer::databaseUrl() const
{
    return m_url.resolved(QUrl(QStringLiteral("catalogue")));
}

QUrl CouchDBServer::databaseUrl(const QString &credentials) const
{
    QUrl url = databaseUrl();
    url.setUserInfo(credentials);
    return url;
}

int CouchDBServer::createDatabase()
{
    const int status = send("PUT", QString()).status;
    if (status != 201)
        return status;
    const QJsonObject view{{"map", QString::fromUtf8(viewMapFunction())}};
    const QJsonObject design{
        {"language", "javascript"}, {"views", QJsonObject{{"packages", view}}}};
    return send("PUT", QStringLiteral("/_design/norvak"), QJsonDocument(design).toJson()).status;
}

int CouchDBServer::putDocument(const QString &id, QJsonObject document)
{
    const QString current = revision(id);
    if (!current.isEmpty())
        document.insert("_rev", current);
    return send("PUT", '/' + encoded(id), QJsonDocument(document).toJson()).status;
}

int CouchDBServer::putAttachment(const QString &id, const QString &name, const QByteArray &content)
{
    const QString path = '/' + encoded(id) + '/' + encoded(name) + "?rev=" + revision(id);
    return send("PUT", path, content, "application/octet-stream").status;
}

int CouchDBServer::removeDocument(const QString &id)
{
    return send("DELETE", '/' + encoded(id) + "?rev=" + revision(id)).status;
}

QJsonObject CouchDBServer::document(const QString &id)
{
    return QJsonDocument::fromJson(send("GET", '/' + encoded(id)).body).object();
}

QString CouchDBServer::revision(const QString &id)
{
    return document(id).value("_rev").toString();
}

CouchDBServer::Answer CouchDBServer::send(
    const QByteArray &verb, const QString &path, const QByteArray &body,
    const QByteArray &contentType)
{
    QNetworkRequest request(QUrl(databaseUrl().toString() + path, QUrl::StrictMode));
    request.setHeader(QNetworkRequest::ContentTypeHeader, contentType);
    if (!m_credentials.isEmpty())
        request.setRawHeader("Authorization", "Basic " + m_credentials.toUtf8().toBase64());
    QNetworkReply *reply = m_manager.sendCustomRequest(request, verb, body);
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    loop.exec();
    reply->deleteLater();
    return {reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), reply->readAll()};
}

} // namespace nk::pm::test

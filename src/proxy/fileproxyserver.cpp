// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/fileproxyserver.h"

#include "proxy/fileproxyconnection.h"
#include "proxy/ifileproxy.h"

#include <QHash>
#include <QRandomGenerator>
#include <QScopedValueRollback>
#include <QStringList>
#include <QThread>
#include <QWeakPointer>

namespace nk::pm {

struct FileProxyServerPrivate
{
    FileProxyServer *q;
    QHash<int, FileProxyConnection *> connections; ///< by connectionId; children of q
    QHash<QString, IFileProxy *> proxies;          ///< by token; not owned
    bool callingProxy = false;

    bool makeRoom() const;
};

/// False if all places are taken by connections at work.
bool FileProxyServerPrivate::makeRoom() const
{
    if (connections.size() < FileProxyServer::maxConnections)
        return true;
    FileProxyConnection *oldest = nullptr;
    for (FileProxyConnection *connection : connections) {
        if (connection->isIdle()
            && (!oldest || connection->connectionId() < oldest->connectionId()))
            oldest = connection;
    }
    if (oldest)
        oldest->end();
    return oldest;
}

namespace {

QString newToken()
{
    const quint64 number = QRandomGenerator64::global()->generate();
    const QByteArray bytes(reinterpret_cast<const char *>(&number), sizeof number);
    return QString::fromLatin1(
        bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

QString targetPath(const QString &token, const QString &relative)
{
    return QStringLiteral("/%1/%2").arg(token, relative);
}

} // namespace

FileProxyServer::FileProxyServer(QObject *parent)
    : QTcpServer(parent)
    , d(new FileProxyServerPrivate{this, {}, {}})
{
    listen(QHostAddress::LocalHost, 0);
    connect(this, &QTcpServer::newConnection, this, &FileProxyServer::handleConnection);
}

FileProxyServer::~FileProxyServer() = default;

QSharedPointer<FileProxyServer> FileProxyServer::instance()
{
    static QWeakPointer<FileProxyServer> current;
    QSharedPointer<FileProxyServer> server = current.toStrongRef();
    if (!server) {
        server.reset(new FileProxyServer, &FileProxyServer::release);
        current = server;
    }
    return server;
}

/// The last holder may let go from within IFileProxy::requestFile(), with the server's own
/// functions on the stack, or on a pool thread, with the last index.
void FileProxyServer::release(FileProxyServer *server)
{
    if (server->thread() == QThread::currentThread() && !server->d->callingProxy)
        delete server;
    else
        server->deleteLater();
}

QString FileProxyServer::addProxy(IFileProxy *proxy)
{
    QString token = newToken();
    d->proxies.insert(token, proxy);
    return token;
}

void FileProxyServer::removeProxy(const QString &token)
{
    d->proxies.remove(token);
}

QUrl FileProxyServer::proxyUrl(const QString &token, const QUrl &relative) const
{
    if (!d->proxies.contains(token))
        return QUrl();
    QUrl url;
    url.setScheme(QStringLiteral("http"));
    url.setHost(QStringLiteral("localhost"));
    url.setPort(serverPort());
    url.setPath(targetPath(token, QString()));
    return url.resolved(relative);
}

void FileProxyServer::respond(
    const QString &token, const QUrl &url, int code, const QString &filePath)
{
    const QString target = targetPath(token, url.toString());
    // A copy, because a connection whose client has gone may close while it is answered.
    const auto connections = d->connections;
    for (FileProxyConnection *connection : connections) {
        if (connection->state() == FileProxyConnection::AwaitingResponse
            && QString::fromUtf8(connection->requestTarget()) == target)
            connection->sendResponse(code, filePath);
    }
}

void FileProxyServer::handleConnection()
{
    while (hasPendingConnections() && d->makeRoom()) {
        auto *connection = new FileProxyConnection(nextPendingConnection(), this);
        d->connections.insert(connection->connectionId(), connection);
        connect(
            connection, &FileProxyConnection::fileRequested, this, &FileProxyServer::requestFile);
        connect(connection, &FileProxyConnection::closed, this, &FileProxyServer::closeConnection);
        // Queued: what follows may end the connection.
        for (const auto freed : {&FileProxyConnection::closed, &FileProxyConnection::idle})
            connect(
                connection, freed, this, &FileProxyServer::handleConnection, Qt::QueuedConnection);
    }
}

void FileProxyServer::closeConnection()
{
    auto *connection = qobject_cast<FileProxyConnection *>(sender());
    if (!connection)
        return;
    d->connections.remove(connection->connectionId());
    connection->deleteLater();
}

void FileProxyServer::requestFile(QUrl file)
{
    auto *connection = qobject_cast<FileProxyConnection *>(sender());
    if (!connection)
        return;
    QStringList parts = file.path(QUrl::FullyDecoded).split(QLatin1Char('/'), Qt::SkipEmptyParts);
    IFileProxy *proxy = parts.isEmpty() ? nullptr : d->proxies.value(parts.takeFirst());
    if (!proxy) {
        connection->sendResponse(FileProxyConnection::NotFound, QString());
        return;
    }
    const QScopedValueRollback<bool> guard(d->callingProxy, true);
    const QUrl url(parts.join(QLatin1Char('/')), QUrl::TolerantMode);
    proxy->requestFile(url);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QScopedPointer>
#include <QSharedPointer>
#include <QTcpServer>
#include <QUrl>

namespace nk::pm {

class IFileProxy;
struct FileProxyServerPrivate;

/// A small HTTP server on the loopback interface, for files that aren't on the disk yet when the
/// user interface wants a URL of them.
///
/// Process-wide; lives as long as somebody holds the pointer of instance(). All operations belong
/// to the thread that made it, which runs an event loop; only the pointer may be dropped on any
/// thread.
class FileProxyServer : public QTcpServer
{
    Q_OBJECT

public:
    /// Listens on a free port. If that fails, URLs have the port 0 and nobody answers them.
    explicit FileProxyServer(QObject *parent = nullptr);
    ~FileProxyServer() override;

    /// So many connections are served at a time, each of which may take two file descriptors. For
    /// one more the oldest idle one goes; while all are at work, it waits.
    static constexpr int maxConnections = 256;

    /// The living server, or a new one on a port of its own if all holders of the last are gone.
    static QSharedPointer<FileProxyServer> instance();

    /// Registers \a proxy, not owned, until removeProxy(). Returns the token of its URLs.
    QString addProxy(IFileProxy *proxy);
    /// Requests under \a token get 404 from now on; those that wait stay open until respond().
    void removeProxy(const QString &token);

    /// The URL under which clients have the file \a relative of a proxy. Invalid for an unknown
    /// token.
    QUrl proxyUrl(const QString &token, const QUrl &relative) const;

    /// Answers all clients that wait for the file \a url under \a token: with the file \a filePath
    /// for the HTTP status 200, with the bare status otherwise. Targets are compared as text: \a
    /// url is what IFileProxy::requestFile() got, and the client asked in the form that proxyUrl()
    /// gives.
    void respond(const QString &token, const QUrl &url, int code, const QString &filePath);

private Q_SLOTS:
    void handleConnection();
    void closeConnection();
    void requestFile(QUrl file);

private:
    static void release(FileProxyServer *server);

    const QScopedPointer<FileProxyServerPrivate> d;
};

} // namespace nk::pm

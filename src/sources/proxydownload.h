// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/filestore.h"

#include <norvakaccount/service.h>

#include <QObject>
#include <QPointer>
#include <QSharedPointer>
#include <QUrl>
#include <QVector>

namespace nk {
class GetRequest;
}

namespace nk::pm {

class FileProxyServer;

/// The HTTP status with which the file proxy's clients are answered.
namespace ProxyStatus {
enum : int { Ok = 200, NotFound = 404, InternalError = 500, BadGateway = 502 };
}

/// Where the answer to a request of the file proxy goes.
struct ProxyClient
{
    QSharedPointer<FileProxyServer> server;
    QString token;
    QUrl url;                               ///< as IFileProxy::requestFile() got it
    QPointer<nk::account::Service> service; ///< that has the file

    void respond(int code, const QString &filePath = {}) const;
};

/// One file on its way into the store because clients of the file proxy want it. Answers them when
/// the file is there or can't be had, also when all others have let go of server and store, and
/// then deletes itself; at the latest with the application object. GUI thread, but the commit,
/// which waits for the disk, runs on a disk thread.
class ProxyDownload final : public QObject
{
public:
    /// Answers \a client with the file \a digest of \a store, which isn't there yet. There is one
    /// download per file: a client for whom one runs waits for it. If that fails and its own
    /// service is another one, that is asked next.
    static void serve(
        const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest);
    ~ProxyDownload() override;

private:
    ProxyDownload(
        const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest,
        nk::GetRequest *request, FileStoreTarget *target);
    void commit();
    void finish(int code);

    QVector<ProxyClient> m_clients; // the first one's service is asked
    const QSharedPointer<FileStore> m_store;
    const QString m_digest;
    QSharedPointer<FileStoreTarget> m_target; // until it is committed
};

} // namespace nk::pm

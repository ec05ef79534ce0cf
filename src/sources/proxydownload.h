// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/filestore.h"

#include <QFuture>
#include <QObject>
#include <QSharedPointer>
#include <QUrl>

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
    QUrl url; ///< as IFileProxy::requestFile() got it
};

/// One file on its way into the store because a client of the file proxy wants it. Answers the
/// client when the file is there or can't be had, also when all others have let go of server and
/// store, and then deletes itself; at the latest with the application object. GUI thread, but the
/// commit, which waits for the disk, runs on a thread of the store.
class ProxyDownload final : public QObject
{
public:
    /// Owns \a request, which is running, and \a target, which is open, from now on.
    ProxyDownload(
        const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest,
        nk::GetRequest *request, FileStoreTarget *target);
    ~ProxyDownload() override;

private:
    void commit();
    void answer(int code);

    const ProxyClient m_client;
    const QSharedPointer<FileStore> m_store;
    const QString m_digest;
    FileStoreTarget *const m_target;
    QFuture<FileStoreTarget::CommitResult> m_commit;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/proxydownload.h"

#include "proxy/fileproxyserver.h"

#include <QCoreApplication>
#include <QFutureWatcher>
#include <QtConcurrent>
#include <norvak/request.h>

namespace nk::pm {

ProxyDownload::ProxyDownload(
    const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest,
    nk::GetRequest *request, FileStoreTarget *target)
    : QObject(QCoreApplication::instance())
    , m_client(client)
    , m_store(store)
    , m_digest(digest)
    , m_target(target)
{
    // The request is the first of the two children to go, since it writes to the other.
    request->setParent(this);
    target->setParent(this);
    request->setDataSink(target);
    connect(request, &nk::Request::finished, this, [this, request] {
        const int code = request->responseCode();
        if (code == ProxyStatus::Ok)
            commit();
        else // 0: there was no answer to pass on
            answer(code == 0 ? int(ProxyStatus::BadGateway) : code);
    });
}

// The target goes next, and the job works on it.
ProxyDownload::~ProxyDownload()
{
    m_commit.waitForFinished();
}

void ProxyDownload::commit()
{
    using CommitResult = FileStoreTarget::CommitResult;
    auto *watcher = new QFutureWatcher<CommitResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this] {
        const bool stored = m_commit.result() == FileStoreTarget::CommitOk;
        answer(stored ? ProxyStatus::Ok : ProxyStatus::InternalError);
    });
    m_commit =
        QtConcurrent::run(m_store->diskThreads(), [target = m_target] { return target->commit(); });
    watcher->setFuture(m_commit);
}

void ProxyDownload::answer(int code)
{
    const QString path = code == ProxyStatus::Ok ? m_store->filePath(m_digest) : QString();
    deleteLater();
    m_client.server->respond(m_client.token, m_client.url, code, path);
}

} // namespace nk::pm

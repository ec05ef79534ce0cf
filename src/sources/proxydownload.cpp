// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/proxydownload.h"

#include "proxy/fileproxyserver.h"

#include <norvak/request.h>

#include <QCoreApplication>
#include <QFutureWatcher>
#include <QHash>

#include <utility>

namespace nk::pm {

namespace {

/// What is on its way, by digest. Never dies: downloads go with the application object, which may
/// outlive static ones.
QHash<QString, ProxyDownload *> &running()
{
    static auto *downloads = new QHash<QString, ProxyDownload *>;
    return *downloads;
}

} // namespace

void ProxyClient::respond(int code, const QString &filePath) const
{
    server->respond(token, url, code, filePath);
}

void ProxyDownload::serve(
    const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest)
{
    if (ProxyDownload *download = running().value(digest)) {
        download->m_clients.append(client);
        return;
    }
    if (!client.service)
        return client.respond(ProxyStatus::BadGateway);
    std::unique_ptr<FileStoreTarget> target(
        store->createTarget(digest, QCryptographicHash::Sha224));
    if (!target)
        return client.respond(ProxyStatus::InternalError);
    nk::GetRequest *request =
        client.service->getRequest(QUrl(QStringLiteral("./api/v1/ledger/%1").arg(digest)));
    if (!request)
        return client.respond(ProxyStatus::BadGateway);
    running().insert(digest, new ProxyDownload(client, store, digest, request, target.release()));
}

// Owns the request, which is running, and the target, which is open.
ProxyDownload::ProxyDownload(
    const ProxyClient &client, const QSharedPointer<FileStore> &store, const QString &digest,
    nk::GetRequest *request, FileStoreTarget *target)
    : QObject(QCoreApplication::instance())
    , m_clients{client}
    , m_store(store)
    , m_digest(digest)
    , m_target(target)
{
    request->setParent(this);
    target->setParent(nullptr);
    request->setDataSink(target);
    connect(request, &nk::Request::finished, this, [this, request] {
        const int code = request->responseCode();
        if (code == ProxyStatus::Ok)
            commit();
        else // 0: there was no answer to pass on
            finish(code == 0 ? int(ProxyStatus::BadGateway) : code);
    });
}

ProxyDownload::~ProxyDownload()
{
    if (running().value(m_digest) == this)
        running().remove(m_digest);
}

void ProxyDownload::commit()
{
    auto *watcher = new QFutureWatcher<FileStore::CommitResult>(this);
    connect(watcher, &QFutureWatcherBase::finished, this, [this, watcher] {
        const bool stored = watcher->result() == FileStoreTarget::CommitOk;
        finish(stored ? ProxyStatus::Ok : ProxyStatus::InternalError);
    });
    watcher->setFuture(m_store->commit(std::exchange(m_target, {})));
}

void ProxyDownload::finish(int code)
{
    deleteLater();
    running().remove(m_digest);
    const auto clients = std::exchange(m_clients, {});
    const QPointer<nk::account::Service> asked = clients.first().service;
    const QString path = code == ProxyStatus::Ok ? m_store->filePath(m_digest) : QString();
    for (const ProxyClient &client : clients) {
        if (code != ProxyStatus::Ok && client.service != asked)
            serve(client, m_store, m_digest);
        else
            client.respond(code, path);
    }
}

} // namespace nk::pm

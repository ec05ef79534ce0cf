// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerfileproxy.h"

#include "proxy/fileproxyserver.h"
#include "sources/ledgerformat.h"
#include "sources/proxydownload.h"

#include <norvakaccount/service.h>

#include <QMutex>
#include <QThread>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace nk::pm {

namespace {

// The first package with this id, the first file of it with this name; null if there is none.
const char *findFile(
    const QVector<PackageEntry> &packages, const QByteArray &id, const QByteArray &fileName)
{
    const auto package = std::find_if(packages.cbegin(), packages.cend(), [&](const auto &entry) {
        return entry.id.bytes() == id;
    });
    return package == packages.cend() ? nullptr : package->files.hashOf(fileName);
}

/// Proxies whose owner died on another thread, on their way to the server's. They don't travel in
/// an event: one that is dropped at the end of the process would destroy them, and the server,
/// while Qt holds the lock of its event queue. What isn't fetched by then is left alone, so this
/// never dies.
struct ReleasedProxies
{
    QMutex mutex;
    std::vector<std::unique_ptr<LedgerFileProxy>> proxies;
};

ReleasedProxies &releasedProxies()
{
    static auto *released = new ReleasedProxies;
    return *released;
}

void deleteReleasedProxies()
{
    std::vector<std::unique_ptr<LedgerFileProxy>> proxies;
    QMutexLocker locker(&releasedProxies().mutex);
    proxies.swap(releasedProxies().proxies);
    locker.unlock(); // the last of them takes the server with it
}

} // namespace

LedgerFileProxy::LedgerFileProxy(
    const QByteArray &ledger, const QVector<PackageEntry> &packages, nk::account::Service *service,
    const QSharedPointer<FileStore> &store)
    : m_ledger(ledger)
    , m_packages(packages)
    , m_service(service)
    , m_store(store)
    , m_server(FileProxyServer::instance())
    , m_token(m_server->addProxy(this))
    , m_base(m_server->proxyUrl(m_token, QUrl()))
{}

LedgerFileProxy::~LedgerFileProxy()
{
    m_server->removeProxy(m_token);
}

void LedgerFileProxy::release(std::unique_ptr<LedgerFileProxy> proxy)
{
    if (!proxy || proxy->m_server->thread() == QThread::currentThread())
        return;
    FileProxyServer *server = proxy->m_server.data();
    QMutexLocker locker(&releasedProxies().mutex);
    releasedProxies().proxies.push_back(std::move(proxy));
    // Under the lock: the server lives as long as the proxy isn't fetched.
    QMetaObject::invokeMethod(server, deleteReleasedProxies, Qt::QueuedConnection);
}

QUrl LedgerFileProxy::url(const QString &package, const QString &fileName) const
{
    const QUrl relative(QStringLiteral("%1/%2").arg(package, fileName));
    const bool leadsElsewhere = !relative.scheme().isEmpty() || !relative.authority().isEmpty();
    return leadsElsewhere ? QUrl() : m_base.resolved(relative);
}

void LedgerFileProxy::requestFile(const QUrl &url)
{
    const ProxyClient client{m_server, m_token, url, m_service};
    if (!m_service)
        return client.respond(ProxyStatus::BadGateway);
    QStringList parts = url.path(QUrl::FullyDecoded).split(QLatin1Char('/'));
    if (parts.size() < 2)
        return client.respond(ProxyStatus::NotFound);
    const QByteArray id = parts.takeFirst().toLatin1();
    const char *hash = findFile(m_packages, id, parts.join(QLatin1Char('/')).toUtf8());
    if (!hash)
        return client.respond(ProxyStatus::NotFound);
    const QString digest = QString::fromLatin1(fileDigest(hash));
    if (m_store->contains(digest))
        client.respond(ProxyStatus::Ok, m_store->filePath(digest));
    else
        ProxyDownload::serve(client, m_store, digest);
}

} // namespace nk::pm

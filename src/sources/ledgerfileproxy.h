// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "proxy/ifileproxy.h"
#include "sources/ledgertables.h"

#include <QPointer>
#include <QSharedPointer>
#include <QUrl>

#include <memory>

namespace nk::account {
class Service;
}

namespace nk::pm {

class FileProxyServer;
class FileStore;

/// Answers the file proxy for the packages of one ledger: from the file store, or by a
/// ProxyDownload into it.
///
/// Registered with the process-wide FileProxyServer from making to release(). It holds what it
/// reads by itself, so that it may outlive its accessor, which can die on any thread while a
/// request is handled here. All else belongs to the server's thread.
class LedgerFileProxy final : public IFileProxy
{
public:
    LedgerFileProxy(
        const QByteArray &ledger, const QVector<PackageEntry> &packages,
        nk::account::Service *service, const QSharedPointer<FileStore> &store);
    ~LedgerFileProxy() override;

    /// Takes \a proxy out of the server and deletes it: at once on the server's thread, else there
    /// and soon. Any thread; null is ignored.
    static void release(std::unique_ptr<LedgerFileProxy> proxy);

    /// The URL at which the proxy has the file \a fileName of \a package. Invalid for an identifier
    /// that would lead to another server: identifiers aren't signed. Any thread.
    QUrl url(const QString &package, const QString &fileName) const;

    void requestFile(const QUrl &url) override;

private:
    const QByteArray m_ledger; // what the packages are views of
    const QVector<PackageEntry> m_packages;
    const QPointer<nk::account::Service> m_service;
    const QSharedPointer<FileStore> m_store;
    const QSharedPointer<FileProxyServer> m_server;
    const QString m_token;
    const QUrl m_base; // of all URLs; the server itself may be asked on its own thread only
};

} // namespace nk::pm

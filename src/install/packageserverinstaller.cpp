// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/packageserverinstaller.h"

#include <norvakaccount/service.h>

namespace nk::pm {

PackageServerInstaller::PackageServerInstaller(
    const QHash<QByteArray, QString> &files, nk::account::Service *service,
    const QSharedPointer<FileStore> &store, const InstallLocation &location)
    : DownloadInstaller({DownloadFailed, CommitFailed, InstallFailed}, store, location)
    , m_service(service)
{
    if (!m_service) {
        addError(NoService, QStringLiteral("No service for package file download"));
        finish();
        return;
    }
    for (auto file = files.begin(); file != files.end(); ++file) {
        const QString digest = QString::fromLatin1(file.key().toHex());
        if (!addFile(digest, file.value()))
            continue;
        const QUrl url(QStringLiteral("./api/v1/ledger/%1").arg(digest));
        fetch(digest, QCryptographicHash::Sha224, url, [&] { return m_service->getRequest(url); });
    }
    start();
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/packageserverinstaller.h"

#include <QPointer>
#include <norvak/request.h>
#include <norvakaccount/service.h>

namespace nk::pm {

static QUrl fileUrl(const QString &digest)
{
    return QUrl(QStringLiteral("./api/v1/ledger/%1").arg(digest));
}

PackageServerInstaller::PackageServerInstaller(
    const QHash<QByteArray, QString> &files, nk::account::Service *service,
    const QSharedPointer<FileStore> &store, const InstallLocation &location)
    : DownloadInstaller({DownloadFailed, CommitFailed, InstallFailed}, store, location)
{
    if (!service) {
        addError(NoService, QStringLiteral("No service for package file download"));
        finish();
        return;
    }
    for (auto file = files.begin(); file != files.end(); ++file) {
        const QString digest = QString::fromLatin1(file.key().toHex());
        if (!addFile(digest, file.value()))
            continue;
        fetch(digest, QCryptographicHash::Sha224, fileUrl(digest), download(digest, service));
    }
    start();
}

std::function<nk::Request *()> PackageServerInstaller::download(
    const QString &digest, nk::account::Service *service)
{
    const QPointer<nk::account::Service> sender(service);
    return [url = fileUrl(digest), sender]() -> nk::Request * {
        return sender ? sender->getRequest(url) : nullptr;
    };
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/couchdbpackageinstaller.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QPointer>
#include <norvak/request.h>

namespace nk::pm {

static std::function<nk::Request *()> requestOf(const QUrl &url, QNetworkAccessManager *manager)
{
    return [url, sender = QPointer<QNetworkAccessManager>(manager)] {
        return new nk::GetRequest(QNetworkRequest(url), sender);
    };
}

// "md5-" and the Base64 form, of which the decoder passes over the hyphen. Not an MD5, but as long
// as the digest of a signed file, it would take that file's place in the store.
QString CouchDBPackageInstaller::digestOf(const QJsonObject &attachment)
{
    const QString text = attachment[QLatin1String("digest")].toString().mid(3);
    const QByteArray digest = QByteArray::fromBase64(text.toLatin1());
    const bool isMd5 = digest.size() == QCryptographicHash::hashLength(QCryptographicHash::Md5);
    return isMd5 ? QString::fromLatin1(digest.toHex()) : QString();
}

CouchDBPackageInstaller::CouchDBPackageInstaller(
    const QUrl &documentUrl, QNetworkAccessManager *manager, const QJsonObject &document,
    const QSharedPointer<FileStore> &store, const InstallLocation &location)
    : DownloadInstaller({DownloadFailed, CommitFailed, InstallFailed}, store, location)
{
    const QJsonObject attachments = document[QLatin1String("_attachments")].toObject();
    for (auto attachment = attachments.begin(); attachment != attachments.end(); ++attachment) {
        const QString digest = digestOf(attachment.value().toObject());
        if (!addFile(digest, attachment.key()))
            continue;
        const QUrl url = documentUrl.resolved(QUrl(attachment.key()));
        fetch(digest, QCryptographicHash::Md5, url, requestOf(url, manager));
    }
    start();
}

std::function<nk::Request *()> CouchDBPackageInstaller::download(
    const QString &digest, const QUrl &documentUrl, QNetworkAccessManager *manager,
    const QJsonObject &document)
{
    const QJsonObject attachments = document[QLatin1String("_attachments")].toObject();
    for (auto attachment = attachments.begin(); attachment != attachments.end(); ++attachment) {
        if (digestOf(attachment.value().toObject()) == digest)
            return requestOf(documentUrl.resolved(QUrl(attachment.key())), manager);
    }
    return {};
}

} // namespace nk::pm

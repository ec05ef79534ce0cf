// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/downloadinstaller.h"

#include <QJsonObject>
#include <QUrl>

class QNetworkAccessManager;

namespace nk::pm {

/// Installs one package that is a CouchDB document: each attachment is a file of the package, known
/// by its MD5.
class CouchDBPackageInstaller final : public DownloadInstaller
{
    Q_OBJECT

public:
    enum ErrorCode {
        DownloadFailed = 1, ///< for one file: an HTTP status other than 200
        CommitFailed = 2,   ///< for one file: the store refused the content
        InstallFailed = 3,  ///< for one file: neither link nor copy worked
    };

    /// Begins the work. \a documentUrl ends in a slash; attachment names are resolved against it.
    /// \a manager isn't owned and may be null or die at any time. Of \a document, "_attachments" is
    /// read.
    CouchDBPackageInstaller(
        const QUrl &documentUrl, QNetworkAccessManager *manager, const QJsonObject &document,
        const QSharedPointer<FileStore> &store, const InstallLocation &location);

    /// The hexadecimal MD5 of an entry of "_attachments"; null if it hasn't got one.
    static QString digestOf(const QJsonObject &attachment);

    /// How the attachment of \a document with \a digest (lower-case hexadecimal) is asked for;
    /// empty if there is none. The others as above.
    static std::function<nk::Request *()> download(
        const QString &digest, const QUrl &documentUrl, QNetworkAccessManager *manager,
        const QJsonObject &document);
};

} // namespace nk::pm

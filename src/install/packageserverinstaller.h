// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/downloadinstaller.h"

#include <QByteArray>
#include <QHash>

namespace nk::account {
class Service;
}

namespace nk::pm {

/// Installs one package of a package server, whose signed ledger vouches for the SHA-224 of each
/// file.
class PackageServerInstaller final : public DownloadInstaller
{
    Q_OBJECT

public:
    enum ErrorCode {
        NoService = 1,      ///< nothing to download with; finished inside the constructor
        DownloadFailed = 2, ///< for one file: an HTTP status other than 200
        CommitFailed = 3,   ///< for one file: the store refused the content
        InstallFailed = 4,  ///< for one file: neither link nor copy worked
    };

    /// Begins the work. \a files maps raw digests (28 bytes) to file names. \a service isn't owned
    /// and may be null or die at any time.
    PackageServerInstaller(
        const QHash<QByteArray, QString> &files, nk::account::Service *service,
        const QSharedPointer<FileStore> &store, const InstallLocation &location);

    /// How the file with \a digest (lower-case hexadecimal) is asked for. \a service as above.
    static std::function<nk::Request *()> download(
        const QString &digest, nk::account::Service *service);
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/packageinstaller.h"

#include <QCryptographicHash>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QString>
#include <QUrl>

#include <functional>

namespace nk {
class Request;
}

namespace nk::pm {

class FileStore;
struct DownloadInstallerPrivate;

/// What the installers of the network sources have in common: all files that the store lacks are
/// downloaded at once, all are committed when the last request has ended, and one job on the thread
/// pool then links or copies every file of the package from the store into the location. Commits
/// run on disk threads; the GUI thread opens the files, and writes what arrives. Where the process
/// may have few open files, a large package comes in several parts, each downloaded and committed.
///
/// A file that fails gives an error, and the others go on. There is no retry: a new installer
/// downloads only what the store still lacks, and waits for what is being committed for another.
/// Destroyed during the downloads, the installer leaves the store unchanged; destroyed later, it
/// leaves the jobs to run to their end.
///
/// A concrete class calls addFile(), and fetch() where needed, for each file and then start(), all
/// in its constructor.
class DownloadInstaller : public PackageInstaller
{
    Q_OBJECT

protected:
    /// The numbers that the concrete class gives to the failures of one file.
    struct ErrorCodes
    {
        int download; ///< the HTTP status isn't 200, or there was no place to write to
        int commit;   ///< the store refused the content
        int install;  ///< neither link nor copy worked
    };

    DownloadInstaller(
        const ErrorCodes &codes, const QSharedPointer<FileStore> &store,
        const InstallLocation &location);
    ~DownloadInstaller() override;

    /// The package has a file \a name with \a digest (hexadecimal). Of several names for one digest
    /// the last one counts. True if the store lacks the file.
    bool addFile(const QString &digest, const QString &name);

    /// Lets the request that \a send makes fill the store's file with \a digest by \a algorithm.
    /// The installer becomes the request's owner; \a send may be called later, or never. \a url is
    /// for the error messages. A digest that the store refuses, or a null request, counts as a
    /// failed download.
    void fetch(
        const QString &digest, QCryptographicHash::Algorithm algorithm, const QUrl &url,
        const std::function<nk::Request *()> &send);

    /// All files are named.
    void start();

private Q_SLOTS:
    void downloadFinished();
    void installFinished();

private:
    friend struct DownloadInstallerPrivate;
    QScopedPointer<DownloadInstallerPrivate> d;
};

} // namespace nk::pm

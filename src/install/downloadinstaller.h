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
class FileStoreTarget;
struct DownloadInstallerPrivate;

/// One file of a package on its way into the store.
struct DownloadEntry
{
    QUrl url;
    QString digest;                    ///< hexadecimal
    nk::Request *request = nullptr;    ///< null from the moment it finished
    FileStoreTarget *target = nullptr; ///< null once it was committed or given up
    int responseCode = 0;              ///< HTTP status of the finished request, 0 before
};

/// What the installers of the network sources have in common: all files that the store lacks are
/// downloaded at once, all are committed when the last request has ended, and one job on the thread
/// pool then links or copies every file of the package from the store into the location. The GUI
/// thread doesn't wait for the disk but to open the files.
///
/// A file that fails gives an error, and the others go on. There is no retry: a new installer
/// downloads only what the store still lacks. Destroyed during the downloads, the installer leaves
/// the store unchanged; during the commits, it waits for those that have begun and drops the
/// others; destroyed later, it leaves the job to run to its end.
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
    /// The installer becomes the request's owner. \a url is for the error messages. A digest that
    /// the store refuses counts as a failed download, and nothing is sent.
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

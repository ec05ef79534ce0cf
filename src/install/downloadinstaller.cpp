// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/downloadinstaller.h"

#include "closing/closingdown.h"
#include "install/filestore.h"
#include "install/installdirectory.h"
#include "install/storelock.h"

#include <QFutureWatcher>
#include <QMap>
#include <QtConcurrent>
#include <norvak/request.h>

#include <utility>
#include <vector>

namespace nk::pm {

namespace {

using ErrorWatcher = QFutureWatcher<QList<InstallError>>;

constexpr int httpOk = 200;

/// What the copy job works on, a copy of its own.
struct CopyJob
{
    QSharedPointer<FileStore> store;
    InstallLocation location;
    QMap<QString, QString> fileNames; ///< hexadecimal digest to file name
    int errorCode;
    std::shared_ptr<StoreLock> hold; ///< until the last file is linked

    QList<InstallError> run() const;
};

QList<InstallError> CopyJob::run() const
{
    QList<InstallError> errors;
    const InstallDirectory directory(location);
    for (auto file = fileNames.begin(); file != fileNames.end(); ++file) {
        if (isClosingDown())
            break;
        if (!directory.installFile(store->filePath(file.key()), file.value())) {
            const auto text = QStringLiteral("Failed to install file %1 (%2)");
            errors.append(InstallError{errorCode, text.arg(file.value(), file.key())});
        }
    }
    return errors;
}

} // namespace

/// One file of a package on its way into the store.
struct Download
{
    QUrl url;
    QString digest; // hexadecimal
    QCryptographicHash::Algorithm algorithm;
    std::function<nk::Request *()> send;
    QSharedPointer<FileStoreTarget> target{};  // until it is committed or given up
    int responseCode = 0;                      // HTTP status of the finished request
    QFuture<FileStore::CommitResult> commit{}; // canceled if there is none
};

struct DownloadInstallerPrivate
{
    DownloadInstaller *q;
    DownloadInstaller::ErrorCodes codes;
    QSharedPointer<FileStore> store;
    QMap<QString, QString> fileNames{}; ///< hexadecimal digest to file name, stored or not
    std::vector<Download> downloads{};
    size_t begun = 0;                  ///< how many of them have their request, or can't have one
    bool isWaitingForRoom = false;     ///< for the next of them
    int requestCount = 0;              ///< that have not finished
    int commitCount = 0;               ///< likewise
    ErrorWatcher *watcher = nullptr;   ///< of the running copy job
    std::shared_ptr<StoreLock> hold{}; ///< passed on to that job

    void advance();
    void waitForRoom();
    void begin(size_t number);
    void watch(const QFuture<FileStore::CommitResult> &commit);
    void report(const Download &download);
    void startInstall();
};

/// Does what can be done now. Called whenever something has ended.
void DownloadInstallerPrivate::advance()
{
    while (begun < downloads.size() && store->hasRoom())
        begin(begun++);
    const bool isComplete = begun == downloads.size();
    if (!isComplete)
        waitForRoom();
    if (requestCount > 0)
        return;
    // All at the same time, so that the device can make several files durable at once; and before
    // anybody waits for more room, since these targets take theirs.
    for (Download &download : downloads) {
        if (download.target) {
            download.commit = store->commit(std::exchange(download.target, {}));
            watch(download.commit);
        }
    }
    if (isComplete && commitCount == 0)
        startInstall();
}

void DownloadInstallerPrivate::waitForRoom()
{
    if (std::exchange(isWaitingForRoom, true))
        return;
    store->waitForRoom(q, [this] {
        isWaitingForRoom = false;
        advance();
    });
}

/// Sends for a file, unless it is being committed for somebody else.
void DownloadInstallerPrivate::begin(size_t number)
{
    Download &download = downloads[number];
    download.commit = store->runningCommit(download.digest);
    if (!download.commit.isCanceled()) {
        download.responseCode = httpOk;
        return watch(download.commit);
    }
    download.target.reset(store->createTarget(download.digest, download.algorithm));
    nk::Request *request = download.target ? download.send() : nullptr;
    if (!request)
        return download.target.reset();
    download.target->setParent(nullptr);
    request->setParent(q);
    request->setDataSink(download.target.data());
    request->setSuppressErrors(true);
    request->setProperty("id", int(number));
    QObject::connect(request, &nk::Request::finished, q, &DownloadInstaller::downloadFinished);
    ++requestCount;
}

void DownloadInstallerPrivate::watch(const QFuture<FileStore::CommitResult> &commit)
{
    ++commitCount;
    auto *commitWatcher = new QFutureWatcher<FileStore::CommitResult>(q);
    QObject::connect(commitWatcher, &QFutureWatcherBase::finished, q, [this, commitWatcher] {
        commitWatcher->deleteLater();
        --commitCount;
        advance();
    });
    commitWatcher->setFuture(commit);
}

void DownloadInstallerPrivate::report(const Download &download)
{
    const QString url = download.url.toString(QUrl::RemoveUserInfo); // it is logged and shown
    if (download.responseCode != httpOk) {
        const auto text = QStringLiteral("Download of %1 failed with code %2");
        q->addError(codes.download, text.arg(url, QString::number(download.responseCode)));
    } else if (const auto result = download.commit.result(); result != FileStoreTarget::CommitOk) {
        const auto text = QStringLiteral("Commit of file %1 (%2) failed (code %3)");
        q->addError(codes.commit, text.arg(download.digest, url, QString::number(result)));
    }
}

void DownloadInstallerPrivate::startInstall()
{
    if (watcher)
        return;
    for (const Download &download : downloads)
        report(download);
    const CopyJob job{store, q->location(), fileNames, codes.install, std::exchange(hold, {})};
    watcher = new ErrorWatcher(q);
    QObject::connect(watcher, &ErrorWatcher::finished, q, &DownloadInstaller::installFinished);
    watcher->setFuture(QtConcurrent::run([job] { return job.run(); }));
}

DownloadInstaller::DownloadInstaller(
    const ErrorCodes &codes, const QSharedPointer<FileStore> &store,
    const InstallLocation &location)
    : PackageInstaller(location)
    , d(new DownloadInstallerPrivate{this, codes, store})
{}

DownloadInstaller::~DownloadInstaller() = default;

bool DownloadInstaller::addFile(const QString &digest, const QString &name)
{
    if (!d->hold)
        d->hold = d->store->hold();
    d->fileNames[digest] = name;
    return !d->store->contains(digest);
}

void DownloadInstaller::fetch(
    const QString &digest, QCryptographicHash::Algorithm algorithm, const QUrl &url,
    const std::function<nk::Request *()> &send)
{
    d->downloads.push_back({url, digest, algorithm, send});
}

void DownloadInstaller::start()
{
    d->advance();
}

void DownloadInstaller::downloadFinished()
{
    const auto *request = static_cast<nk::Request *>(sender());
    Download &download = d->downloads[size_t(request->property("id").toInt())];
    download.responseCode = request->responseCode();
    if (download.responseCode == httpOk)
        FileStore::prepare(download.target);
    else
        download.target.reset();
    --d->requestCount;
    d->advance();
}

void DownloadInstaller::installFinished()
{
    const auto errors = d->watcher->result();
    for (const InstallError &error : errors)
        addError(error);
    finish();
}

} // namespace nk::pm

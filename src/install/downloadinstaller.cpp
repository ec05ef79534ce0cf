// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/downloadinstaller.h"

#include "install/closingdown.h"
#include "install/filestore.h"
#include "install/installdirectory.h"

#include <QFutureWatcher>
#include <QHash>
#include <QMap>
#include <QtConcurrent>
#include <norvak/request.h>

#include <atomic>

namespace nk::pm {

namespace {

using ErrorWatcher = QFutureWatcher<QList<InstallError>>;

constexpr int httpOk = 200;

/// For messages, which are logged and shown: without name and password.
QString urlText(const QUrl &url)
{
    return url.toString(QUrl::RemoveUserInfo);
}

/// What the copy job works on, a copy of its own.
struct CopyJob
{
    QSharedPointer<FileStore> store;
    InstallLocation location;
    QMap<QString, QString> fileNames; ///< hexadecimal digest to file name
    int errorCode;

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

struct DownloadInstallerPrivate
{
    using CommitResult = FileStoreTarget::CommitResult;
    using Step = void (DownloadInstallerPrivate::*)();

    DownloadInstaller *q;
    DownloadInstaller::ErrorCodes codes;
    QSharedPointer<FileStore> store;
    QMap<QString, QString> fileNames;    ///< hexadecimal digest to file name, stored or not
    QHash<int, DownloadEntry> downloads; ///< by number, from 0
    QHash<int, QFuture<CommitResult>> commits;
    int pendingCount = 0;            ///< requests or commits that have not finished
    ErrorWatcher *watcher = nullptr; ///< of the running copy job
    QVector<QFuture<void>> diskJobs; ///< what works on targets of this installer
    std::atomic_bool isAbandoned{false};

    DownloadInstallerPrivate(
        DownloadInstaller *installer, const DownloadInstaller::ErrorCodes &errorCodes,
        const QSharedPointer<FileStore> &fileStore);
    ~DownloadInstallerPrivate();
    template<typename Job>
    auto onDiskThread(Job job, Step next);
    void prepareCommit(FileStoreTarget *target);
    void endDownload();
    void startCommits();
    void endCommit();
    void report(int number, DownloadEntry *entry);
    void startInstall();
};

DownloadInstallerPrivate::DownloadInstallerPrivate(
    DownloadInstaller *installer, const DownloadInstaller::ErrorCodes &errorCodes,
    const QSharedPointer<FileStore> &fileStore)
    : q(installer)
    , codes(errorCodes)
    , store(fileStore)
{}

// The targets go next, and a job works on one of them.
DownloadInstallerPrivate::~DownloadInstallerPrivate()
{
    isAbandoned = true;
    for (QFuture<void> &job : diskJobs)
        job.waitForFinished();
}

/// Runs \a job on a thread of the store and then, back on the GUI thread, \a next.
template<typename Job>
auto DownloadInstallerPrivate::onDiskThread(Job job, Step next)
{
    using Result = decltype(job());
    auto *jobWatcher = new QFutureWatcher<Result>(q);
    QObject::connect(jobWatcher, &QFutureWatcherBase::finished, q, [this, jobWatcher, next] {
        jobWatcher->deleteLater();
        (this->*next)();
    });
    const QFuture<Result> future = QtConcurrent::run(store->diskThreads(), job);
    diskJobs.append(QFuture<void>(future));
    jobWatcher->setFuture(future);
    return future;
}

void DownloadInstallerPrivate::prepareCommit(FileStoreTarget *target)
{
    const auto job = [this, target] {
        if (!isAbandoned)
            target->prepareCommit();
    };
    onDiskThread(job, &DownloadInstallerPrivate::endDownload);
}

void DownloadInstallerPrivate::endDownload()
{
    if (--pendingCount < 1)
        startCommits();
}

// All at the same time, so that the device can make several files durable at once.
void DownloadInstallerPrivate::startCommits()
{
    for (auto entry = downloads.constBegin(); entry != downloads.constEnd(); ++entry) {
        if (entry->responseCode != httpOk)
            continue;
        const auto job = [this, target = entry->target] {
            return isAbandoned ? FileStoreTarget::CommitFailed : target->commit();
        };
        commits.insert(entry.key(), onDiskThread(job, &DownloadInstallerPrivate::endCommit));
    }
    pendingCount = commits.size();
    if (pendingCount < 1)
        startInstall();
}

void DownloadInstallerPrivate::endCommit()
{
    if (--pendingCount < 1)
        startInstall();
}

void DownloadInstallerPrivate::report(int number, DownloadEntry *entry)
{
    if (entry->responseCode == httpOk) {
        const CommitResult result = commits.value(number).result();
        if (result != FileStoreTarget::CommitOk) {
            const auto text = QStringLiteral("Commit of file %1 (%2) failed (code %3)");
            q->addError(
                codes.commit,
                text.arg(entry->digest, urlText(entry->url), QString::number(result)));
        }
    } else {
        const auto text = QStringLiteral("Download of %1 failed with code %2");
        q->addError(
            codes.download, text.arg(urlText(entry->url), QString::number(entry->responseCode)));
    }
    if (entry->target)
        entry->target->deleteLater();
    entry->target = nullptr;
}

void DownloadInstallerPrivate::startInstall()
{
    for (auto entry = downloads.begin(); entry != downloads.end(); ++entry)
        report(entry.key(), &*entry);
    const CopyJob job{store, q->location(), fileNames, codes.install};
    watcher = new ErrorWatcher(q);
    QObject::connect(watcher, &ErrorWatcher::finished, q, &DownloadInstaller::installFinished);
    watcher->setFuture(QtConcurrent::run([job] { return job.run(); }));
}

DownloadInstaller::DownloadInstaller(
    const ErrorCodes &codes, const QSharedPointer<FileStore> &store,
    const InstallLocation &location)
    : PackageInstaller(location)
    , d(new DownloadInstallerPrivate(this, codes, store))
{}

DownloadInstaller::~DownloadInstaller() = default;

bool DownloadInstaller::addFile(const QString &digest, const QString &name)
{
    d->fileNames[digest] = name;
    return !d->store->contains(digest);
}

void DownloadInstaller::fetch(
    const QString &digest, QCryptographicHash::Algorithm algorithm, const QUrl &url,
    const std::function<nk::Request *()> &send)
{
    const int number = d->downloads.size();
    FileStoreTarget *target = d->store->createTarget(digest, algorithm);
    nk::Request *request = target ? send() : nullptr;
    d->downloads.insert(number, DownloadEntry{url, digest, request, target});
    if (!request)
        return;
    // The request is the first of the two children to go, since it writes to the other.
    request->setParent(this);
    target->setParent(this);
    request->setDataSink(target);
    request->setSuppressErrors(true);
    request->setProperty("id", number);
    connect(request, &nk::Request::finished, this, &DownloadInstaller::downloadFinished);
    ++d->pendingCount;
}

void DownloadInstaller::start()
{
    if (d->pendingCount < 1)
        d->startCommits();
}

void DownloadInstaller::downloadFinished()
{
    const auto *request = static_cast<nk::Request *>(sender());
    DownloadEntry &entry = d->downloads[request->property("id").toInt()];
    entry.responseCode = request->responseCode();
    entry.request = nullptr;
    if (entry.responseCode == httpOk)
        d->prepareCommit(entry.target);
    else
        d->endDownload();
}

void DownloadInstaller::installFinished()
{
    const auto errors = d->watcher->result();
    for (const InstallError &error : errors)
        addError(error);
    d->watcher->deleteLater();
    d->watcher = nullptr;
    finish();
}

} // namespace nk::pm

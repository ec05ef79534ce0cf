// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storefetch.h"

#include "install/caretask.h"
#include "install/storecheck.h"

#include <QFutureWatcher>
#include <QTimer>
#include <norvak/request.h>

#include <utility>

namespace nk::pm {

namespace {

constexpr int httpOk = 200;
constexpr int mostAtOnce = 6; // as many as connections to one server

/// A file on its way.
struct Fetch
{
    QString digest;
    QVector<FileDownload> downloads; ///< that haven't been tried
};

} // namespace

struct StoreFetchPrivate
{
    StoreFetch *q;
    QSharedPointer<FileStore> store;
    QStringList digests; ///< that haven't been begun
    FileFinder finder;
    std::shared_ptr<CareTask> task;
    int running = 0;
    bool isOver = false;

    void advance();
    void tryNext(Fetch fetch);
    bool send(const Fetch &fetch, const FileDownload &download);
    void commit(const Fetch &fetch, const QSharedPointer<FileStoreTarget> &target);
    void ended();
};

void StoreFetchPrivate::advance()
{
    while (running < mostAtOnce && !digests.isEmpty() && task->goesOn()) {
        const QString digest = digests.takeFirst();
        ++running;
        tryNext({digest, finder ? finder(digest) : QVector<FileDownload>()});
    }
    if (running == 0 && !std::exchange(isOver, true))
        Q_EMIT q->finished();
}

void StoreFetchPrivate::ended()
{
    --running;
    ++task->files;
    // From the event loop, so that many who can't be had don't pile up on the stack.
    QTimer::singleShot(0, q, [this] { advance(); });
}

void StoreFetchPrivate::tryNext(Fetch fetch)
{
    while (!fetch.downloads.isEmpty() && task->goesOn()) {
        const FileDownload download = fetch.downloads.takeFirst();
        if (send(fetch, download))
            return;
    }
    ended();
}

bool StoreFetchPrivate::send(const Fetch &fetch, const FileDownload &download)
{
    const QSharedPointer<FileStoreTarget> target(
        store->createTarget(fetch.digest, *algorithmOf(fetch.digest), StorePolicy::Strict));
    nk::Request *request = target ? download() : nullptr;
    if (!request)
        return false;
    target->setParent(nullptr);
    request->setParent(q);
    request->setDataSink(target.data());
    request->setSuppressErrors(true);
    QObject::connect(request, &nk::Request::finished, q, [this, request, fetch, target] {
        if (request->responseCode() == httpOk)
            commit(fetch, target);
        else
            tryNext(fetch);
    });
    return true;
}

void StoreFetchPrivate::commit(const Fetch &fetch, const QSharedPointer<FileStoreTarget> &target)
{
    auto *watcher = new QFutureWatcher<FileStore::CommitResult>(q);
    QObject::connect(watcher, &QFutureWatcherBase::finished, q, [this, watcher, fetch] {
        watcher->deleteLater();
        if (watcher->result() == FileStoreTarget::CommitOk)
            ended();
        else
            tryNext(fetch);
    });
    watcher->setFuture(store->commit(target));
}

StoreFetch::StoreFetch(
    const QSharedPointer<FileStore> &store, const QStringList &digests, const FileFinder &finder,
    const std::shared_ptr<CareTask> &task, QObject *parent)
    : QObject(parent)
    , d(new StoreFetchPrivate{this, store, digests, finder, task})
{
    QTimer::singleShot(0, this, [this] { d->advance(); });
}

StoreFetch::~StoreFetch() = default;

} // namespace nk::pm

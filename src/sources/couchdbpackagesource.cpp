// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbpackagesource.h"

#include "sources/couchdbpackageaccessor.h"
#include "sources/couchdbsnapshots.h"
#include "sources/polledanswer.h"
#include "sources/viewfile.h"

#include <norvak/locations.h>
#include <norvak/request.h>

#include <QBasicTimer>
#include <QCryptographicHash>
#include <QDebug>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QTimerEvent>
#include <QUrl>

#include <chrono>
#include <utility>
#include <vector>

namespace nk::pm {

namespace {

constexpr std::chrono::milliseconds tickInterval{2000};
// The countdown passes below zero with the 61st tick: the polling period is 122 seconds.
constexpr std::chrono::milliseconds pollInterval{120000};

/// One download.
struct Poll
{
    nk::GetRequest *request = nullptr;        // deletes itself once it is over
    ViewFile *file = nullptr;                 // its child
    std::shared_ptr<QTemporaryDir> directory; // of that file alone
};

QDir persistenceDirectory(const QUrl &url)
{
    const QByteArray key =
        QCryptographicHash::hash(url.toString().toLatin1(), QCryptographicHash::Md5).toHex();
    return QDir(nk::Locations::dataLocation().filePath(
        QStringLiteral("packages/couchdb/%1").arg(QLatin1String(key))));
}

} // namespace

struct CouchDBPackageSourcePrivate
{
    CouchDBPackageSource *q;
    QUrl url;
    QPointer<QNetworkAccessManager> networkManager;
    QBasicTimer timer;
    Poll poll; // the running one
    CouchDBSnapshot current;
    std::vector<std::shared_ptr<QTemporaryDir>> superseded; // kept if that is asked for
    QDir persistDir;
    std::chrono::milliseconds countdown = pollInterval;
    ViewFileRules rules;
    bool keepsSuperseded = true;
    bool isUnconditional = false; // the next poll, after one that was refused

    CouchDBPackageSourcePrivate(
        CouchDBPackageSource *source, const QUrl &databaseUrl, QNetworkAccessManager *manager);
    QNetworkRequest takeRequest();
    void start(const QNetworkRequest &request);
    void forget(const Poll &overtaken);
    void supersede(const std::shared_ptr<QTemporaryDir> &directory);
    bool takeSnapshot(const Poll &finished);
};

CouchDBPackageSourcePrivate::CouchDBPackageSourcePrivate(
    CouchDBPackageSource *source, const QUrl &databaseUrl, QNetworkAccessManager *manager)
    : q(source)
    , url(databaseUrl)
    , networkManager(manager)
    , persistDir(persistenceDirectory(databaseUrl))
{
    current = newestSnapshot(persistDir);
}

QNetworkRequest CouchDBPackageSourcePrivate::takeRequest()
{
    QNetworkRequest request(
        QUrl(url.toString() + QLatin1String("/_design/norvak/_view/packages"), QUrl::TolerantMode));
    if (!std::exchange(isUnconditional, false) && !current.etag.isEmpty())
        request.setHeader(QNetworkRequest::IfNoneMatchHeader, current.etag);
    return request;
}

void CouchDBPackageSourcePrivate::start(const QNetworkRequest &request)
{
    poll.directory = std::make_shared<QTemporaryDir>();
    poll.request = new nk::GetRequest(request, networkManager, q);
    poll.file = new ViewFile(poll.directory->filePath(QStringLiteral("view")), rules, poll.request);
    poll.file->open(QIODevice::WriteOnly); // if that fails, it refuses its first byte
    poll.request->setSuppressErrors(true);
    poll.request->setDataSink(poll.file);
}

void CouchDBPackageSourcePrivate::forget(const Poll &overtaken)
{
    if (!overtaken.request)
        return;
    QObject::disconnect(overtaken.request, nullptr, q, nullptr);
    if (!keepsSuperseded)
        delete overtaken.request; // else it runs to its end
    supersede(overtaken.directory);
}

void CouchDBPackageSourcePrivate::supersede(const std::shared_ptr<QTemporaryDir> &directory)
{
    if (keepsSuperseded && directory)
        superseded.push_back(directory);
}

/// Makes a complete answer the current snapshot. False if its content is that already.
bool CouchDBPackageSourcePrivate::takeSnapshot(const Poll &finished)
{
    QString tag = etagOf(*finished.request);
    if (tag.isEmpty()) {
        tag = finished.file->contentTag();
        if (!tag.isEmpty() && tag == current.etag)
            return false;
    }
    supersede(current.directory);
    current = {tag, finished.file->fileName(), finished.directory};
    return true;
}

CouchDBPackageSource::CouchDBPackageSource(
    const QUrl &url, QNetworkAccessManager *manager, QObject *parent)
    : PackageSource(parent)
    , d(new CouchDBPackageSourcePrivate(this, url, manager))
{
    update();
    d->timer.start(int(tickInterval.count()), this);
}

// The requests go first: they write into what goes with the private record.
CouchDBPackageSource::~CouchDBPackageSource()
{
    qDeleteAll(findChildren<nk::Request *>(QString(), Qt::FindDirectChildrenOnly));
}

bool CouchDBPackageSource::contentTags() const
{
    return d->rules.contentTags;
}

void CouchDBPackageSource::setContentTags(bool contentTags)
{
    d->rules.contentTags = contentTags;
}

bool CouchDBPackageSource::keepsSuperseded() const
{
    return d->keepsSuperseded;
}

void CouchDBPackageSource::setKeepsSuperseded(bool keepsSuperseded)
{
    d->keepsSuperseded = keepsSuperseded;
    if (!keepsSuperseded)
        d->superseded.clear();
}

qint64 CouchDBPackageSource::maximumAnswerSize() const
{
    return d->rules.maximumSize;
}

void CouchDBPackageSource::setMaximumAnswerSize(qint64 bytes)
{
    d->rules.maximumSize = bytes;
}

int CouchDBPackageSource::priority() const
{
    return 2;
}

std::unique_ptr<PackageAccessor> CouchDBPackageSource::getAccessor()
{
    return std::make_unique<CouchDBPackageAccessor>(
        d->current.path, d->url, d->networkManager.data(), d->current.directory);
}

void CouchDBPackageSource::persist()
{
    if (!d->persistDir.exists())
        d->persistDir.mkpath(QStringLiteral("."));
    if (!d->current.etag.isEmpty())
        persistSnapshot(d->persistDir, d->current);
}

void CouchDBPackageSource::update()
{
    d->forget(std::exchange(d->poll, {}));
    if (!d->networkManager)
        return;
    d->start(d->takeRequest());
    connect(d->poll.request, &nk::Request::finished, this, &CouchDBPackageSource::finishUpdate);
}

void CouchDBPackageSource::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != d->timer.timerId())
        return PackageSource::timerEvent(event);
    d->countdown -= tickInterval;
    if (d->countdown.count() < 0) {
        update();
        d->countdown = pollInterval;
    }
}

void CouchDBPackageSource::finishUpdate()
{
    const Poll poll = std::exchange(d->poll, {});
    // What is still buffered may find the disk full: a snapshot with a hole is none.
    const bool stored = poll.file->flush();
    poll.file->close();
    const int status = poll.request->responseCode();
    d->isUnconditional = mayRefuseCondition(status);
    if (status == 200 && stored) {
        if (!d->takeSnapshot(poll))
            return;
        Q_EMIT updateRequired(); // comes last: who hears of it may poll anew or delete the source
    } else if (status != 304 && status != 404) {
        qDebug() << "code" << status;
    }
}

} // namespace nk::pm

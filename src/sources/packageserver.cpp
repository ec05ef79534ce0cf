// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/packageserver.h"

#include "sources/ledgerstore.h"
#include "sources/packageserveraccessor.h"
#include "sources/pollbackoff.h"

#include <norvak/request.h>
#include <norvakaccount/service.h>

#include <QDeadlineTimer>
#include <QNetworkReply>
#include <QPointer>
#include <QtConcurrent>

namespace nk::pm {

namespace {

constexpr std::chrono::milliseconds tickInterval{3000};

} // namespace

struct PackageServerPrivate
{
    PackageServer *q;
    QPointer<nk::account::Service> service;
    QPointer<nk::GetRequest> request; // null when no poll runs
    LedgerSnapshot current;
    QDeadlineTimer nextPoll; // expired at first
    PollBackoff backoff;

    bool isServiceAvailable() const
    {
        return service && service->status() == nk::account::Service::Available;
    }
    void takeLedger();
    void confirmLedger();
    void failPoll();
};

void PackageServerPrivate::takeLedger()
{
    current.etag = request->reply()->header(QNetworkRequest::ETagHeader).toString().toLatin1();
    current.ledger = request->rawResponse();
    nextPoll = QDeadlineTimer(backoff.afterSuccess());
    qCDebug(packageServerLog) << "Package server update complete"
                              << "- Received new ledger with ETag" << current.etag;
    Q_EMIT q->updateRequired();
}

void PackageServerPrivate::confirmLedger()
{
    qCDebug(packageServerLog) << "Package server update complete - no changes";
    nextPoll = QDeadlineTimer(backoff.afterSuccess());
}

void PackageServerPrivate::failPoll()
{
    qCCritical(packageServerLog) << "Ledger update failed with status" << request->responseCode()
                                 << request->rawResponse();
    nextPoll = QDeadlineTimer(backoff.afterFailure());
}

PackageServer::PackageServer(nk::account::Service *service, QObject *parent)
    : PackageSource(parent)
    , d(new PackageServerPrivate{this, service, {}, {}, {}, {}})
{
    if (service) {
        d->current = LedgerStore(service->uuid()).load();
        service->enable();
        connect(
            service, &nk::account::Service::statusChanged, this,
            &PackageServer::processServiceStatusChange);
    }
    processServiceStatusChange();
    startTimer(tickInterval, Qt::CoarseTimer);
}

PackageServer::~PackageServer() = default;

int PackageServer::priority() const
{
    return 0;
}

std::unique_ptr<PackageAccessor> PackageServer::getAccessor()
{
    return std::make_unique<PackageServerAccessor>(d->service, d->current.ledger);
}

void PackageServer::persist()
{
    if (!d->service || d->current.etag.isEmpty())
        return;
    QtConcurrent::run(
        [store = LedgerStore(d->service->uuid()), snapshot = d->current] { store.save(snapshot); });
}

void PackageServer::update()
{
    if (d->request || !d->isServiceAvailable())
        return;
    QNetworkRequest request = d->service->createRequest(QUrl(QStringLiteral("./api/v1/ledger")));
    if (!d->current.etag.isEmpty())
        request.setRawHeader("If-None-Match", d->current.etag); // byte for byte as it came
    d->request = d->service->getRequest(request);
    if (!d->request)
        return;
    d->request->setParent(this);
    d->request->setSuppressErrors(true);
    connect(d->request, &nk::Request::finished, this, &PackageServer::processResponse);
}

void PackageServer::timerEvent(QTimerEvent *)
{
    if (!d->request && d->nextPoll.hasExpired())
        update();
}

void PackageServer::processServiceStatusChange()
{
    if (d->isServiceAvailable())
        update();
}

void PackageServer::processResponse()
{
    const QPointer<PackageServer> alive(this); // who hears of the new ledger may delete us
    const int status = d->request->responseCode();
    if (status == 200)
        d->takeLedger();
    else if (status == 304)
        d->confirmLedger();
    else
        d->failPoll();
    if (alive)
        d->request = nullptr;
}

} // namespace nk::pm

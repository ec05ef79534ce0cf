// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/packageserver.h"

#include "sources/ledgerstore.h"
#include "sources/packageserveraccessor.h"
#include "sources/pollbackoff.h"
#include "sources/polledanswer.h"

#include <norvak/request.h>
#include <norvakaccount/service.h>

#include <QDeadlineTimer>
#include <QNetworkRequest>
#include <QPointer>
#include <QtConcurrent>

#include <utility>

namespace nk::pm {

namespace {

constexpr std::chrono::milliseconds tickInterval{3000};

} // namespace

struct PackageServerPrivate
{
    PackageServer *q;
    QPointer<nk::account::Service> service;
    QPointer<nk::GetRequest> poll; // null when none runs
    LedgerSnapshot current;
    QDeadlineTimer nextPoll; // expired at first
    PollBackoff backoff;
    bool isUnconditional = false; // the next poll, after one that was refused

    bool isServiceAvailable() const
    {
        return service && service->status() == nk::account::Service::Available;
    }
    void takeLedger(const nk::Request &request);
    void confirmLedger();
    void failPoll(const nk::Request &request);
};

void PackageServerPrivate::takeLedger(const nk::Request &request)
{
    current.etag = etagOf(request).toLatin1();
    current.ledger = request.rawResponse();
    nextPoll = QDeadlineTimer(backoff.afterSuccess());
    qCDebug(packageServerLog) << "Package server update complete"
                              << "- Received new ledger with ETag" << current.etag;
    Q_EMIT q->updateRequired(); // comes last: who hears of it may poll anew or delete the source
}

void PackageServerPrivate::confirmLedger()
{
    qCDebug(packageServerLog) << "Package server update complete - no changes";
    nextPoll = QDeadlineTimer(backoff.afterSuccess());
}

void PackageServerPrivate::failPoll(const nk::Request &request)
{
    // What servers send with their errors is short; a ledger that broke off isn't.
    constexpr int longestText = 1024;
    qCCritical(packageServerLog) << "Ledger update failed with status" << request.responseCode()
                                 << request.rawResponse().left(longestText);
    nextPoll = QDeadlineTimer(backoff.afterFailure());
}

PackageServer::PackageServer(nk::account::Service *service, QObject *parent)
    : PackageSource(parent)
    , d(new PackageServerPrivate{this, service, {}, {}, {}, {}})
{
    if (service) {
        d->current = LedgerStore(service->uuid()).load();
        service->enable(); // who hears of that may delete it
    }
    if (d->service)
        connect(
            d->service, &nk::account::Service::statusChanged, this,
            &PackageServer::processServiceStatusChange);
    processServiceStatusChange();
    startTimer(tickInterval, Qt::CoarseTimer);
}

// Nothing leads back here while ~QObject() tells of the end.
PackageServer::~PackageServer()
{
    delete d->poll;
    if (d->service)
        d->service->disconnect(this);
}

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
    if (d->poll || !d->isServiceAvailable())
        return;
    QNetworkRequest request = d->service->createRequest(QUrl(QStringLiteral("./api/v1/ledger")));
    if (!std::exchange(d->isUnconditional, false) && !d->current.etag.isEmpty())
        request.setRawHeader("If-None-Match", d->current.etag); // byte for byte as it came
    d->poll = d->service->getRequest(request);
    if (!d->poll)
        return;
    d->poll->setParent(this);
    d->poll->setSuppressErrors(true);
    connect(d->poll, &nk::Request::finished, this, &PackageServer::processResponse);
}

void PackageServer::timerEvent(QTimerEvent *)
{
    if (!d->poll && d->nextPoll.hasExpired())
        update();
}

void PackageServer::processServiceStatusChange()
{
    if (d->isServiceAvailable())
        update();
}

void PackageServer::processResponse()
{
    const auto request = std::exchange(d->poll, {});
    const int status = request->responseCode();
    d->isUnconditional = mayRefuseCondition(status);
    if (status == 200)
        d->takeLedger(*request);
    else if (status == 304)
        d->confirmLedger();
    else
        d->failPoll(*request);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packagesource.h"

#include <norvakpackagemanager_export.h>

#include <QScopedPointer>

namespace nk::account {
class Service;
}

namespace nk::pm {

struct PackageServerPrivate;

/// Follows the catalogue of a package server: one signed file, the ledger.
///
/// The constructor takes the persisted ledger, so that a start without network has the last
/// catalogue. From then on the server is polled 120 seconds after a success, conditionally on the
/// current ledger's ETag, and 5, 10, 20, ... up to 320 seconds after failures, which leave the
/// ledger as it is. What the ledger holds is the accessor's business. GUI thread.
class NK_PM_EXPORT PackageServer : public PackageSource
{
    Q_OBJECT

public:
    /// Enables \a service, which isn't owned; without it, or once it is gone, the source sends
    /// nothing and keeps what it has. Waits for another process that persists the same ledger.
    explicit PackageServer(nk::account::Service *service, QObject *parent = nullptr);
    /// A running poll is aborted, a running persist() goes on.
    ~PackageServer() override;

    /// 0.
    int priority() const override;
    std::unique_ptr<PackageAccessor> getAccessor() override;
    /// Writes the current ledger to disk on the global thread pool, if the service gives it an ETag
    /// and it isn't there already.
    void persist() override;
    /// Polls now, whenever the next poll is due. Nothing while a poll runs or the service isn't
    /// available.
    void update() override;

protected:
    /// Each is a tick, whichever timer it comes from.
    void timerEvent(QTimerEvent *event) override;

private Q_SLOTS:
    void processServiceStatusChange();
    void processResponse();

private:
    QScopedPointer<PackageServerPrivate> d;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QObject>

#include <memory>

namespace nk::pm {

class PackageAccessor;

/// One place that packages come from: a directory, a database, a server.
///
/// Lives on the GUI thread and belongs to the application. A source that can't reach its origin
/// keeps the data it had.
class NK_PM_EXPORT PackageSource : public QObject
{
    Q_OBJECT

public:
    /// Belongs to \a parent, or to whoever makes it; a repository that it is added to doesn't own
    /// it.
    explicit PackageSource(QObject *parent = nullptr);
    ~PackageSource() override;

    /// Rank in the merge: the package of the source with the higher number wins. Local directories
    /// have 3, CouchDB databases 2, package servers 0.
    virtual int priority() const = 0;

    /// A new, unread snapshot of the source as it stands now, never null. Cheap: all reading and
    /// parsing is left to PackageAccessor::load().
    virtual std::unique_ptr<PackageAccessor> getAccessor() = 0;

    /// Makes the data that the last snapshot was taken from survive a restart. Does nothing by
    /// default.
    virtual void persist();

    /// Starts a refresh from the origin, without blocking. Does nothing by default.
    virtual void update();

Q_SIGNALS:
    /// The source holds data that differs from the last snapshot: a new index is needed. Each one
    /// is built whole, also while another is being built, so that a source which changes by the
    /// moment gathers its changes: with less time between two signals than a build takes, builds
    /// and the indexes that they replace pile up, and the newest is late.
    void updateRequired();
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "network/networksource.h"

#include "repository/packageaccessor.h"
#include "repository/packagesource.h"

#include <QHash>

#include <memory>

namespace nk::pm::app {

class TrackedSource;

/// Which source gave which snapshot. Only to be asked about snapshots that are alive: an address
/// may be used again.
using SnapshotOwners = QHash<const PackageAccessor *, const TrackedSource *>;

/// A source that notes the snapshots it gives, so that a package of the index can be told to come
/// from it. All else goes to the source it wraps.
class TrackedSource : public PackageSource
{
    Q_OBJECT

public:
    /// \a kind ("local") and \a location (a path) are for the user. \a owners has to outlive the
    /// source.
    TrackedSource(
        std::unique_ptr<PackageSource> source, const QString &kind, const QString &location,
        SnapshotOwners &owners);
    TrackedSource(NetworkSource source, const QString &kind, SnapshotOwners &owners);
    ~TrackedSource() override;

    QString kind() const { return m_kind; }
    QString location() const { return m_location; }
    /// How its polls went; null for a source that doesn't poll.
    const SourceNetwork *network() const { return m_made.network.get(); }
    /// Why nothing of \a snapshot, which the source gave, is to be seen although the source
    /// answered, or not all of a directory, for people; empty if that isn't so.
    QString refusalOf(const PackageAccessor &snapshot) const;
    /// What reaches its files; null for a source that isn't on the network.
    QNetworkAccessManager *accessManager() const { return m_made.network.get(); }

    int priority() const override { return m_made.source->priority(); }
    std::unique_ptr<PackageAccessor> getAccessor() override;
    void persist() override { m_made.source->persist(); }
    void update() override { m_made.source->update(); }

private:
    const NetworkSource m_made;
    const QString m_kind;
    const QString m_location;
    SnapshotOwners &m_owners;
};

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "trackedsource.h"

namespace nk::pm::cli {

TrackedSource::TrackedSource(
    std::unique_ptr<PackageSource> source, const QString &kind, const QString &location,
    SnapshotOwners &owners)
    : m_made{nullptr, nullptr, std::move(source)}
    , m_kind(kind)
    , m_location(location)
    , m_owners(owners)
{
    connect(
        m_made.source.get(), &PackageSource::updateRequired, this, &PackageSource::updateRequired);
}

TrackedSource::TrackedSource(app::NetworkSource source, const QString &kind, SnapshotOwners &owners)
    : m_made(std::move(source))
    , m_kind(kind)
    , m_location(m_made.network->url().toString())
    , m_owners(owners)
{
    connect(
        m_made.source.get(), &PackageSource::updateRequired, this, &PackageSource::updateRequired);
}

std::unique_ptr<PackageAccessor> TrackedSource::getAccessor()
{
    auto accessor = m_made.source->getAccessor();
    m_owners.insert(accessor.get(), this);
    return accessor;
}

} // namespace nk::pm::cli

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "trackedsource.h"

namespace nk::pm::cli {

TrackedSource::TrackedSource(
    std::unique_ptr<PackageSource> source, const QString &kind, const QString &location,
    SnapshotOwners &owners)
    : m_source(std::move(source))
    , m_kind(kind)
    , m_location(location)
    , m_owners(owners)
{
    connect(m_source.get(), &PackageSource::updateRequired, this, &PackageSource::updateRequired);
}

std::unique_ptr<PackageAccessor> TrackedSource::getAccessor()
{
    auto accessor = m_source->getAccessor();
    m_owners.insert(accessor.get(), this);
    return accessor;
}

} // namespace nk::pm::cli

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/trackedsource.h"

namespace nk::pm::app {

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

TrackedSource::TrackedSource(NetworkSource source, const QString &kind, SnapshotOwners &owners)
    : m_made(std::move(source))
    , m_kind(kind)
    , m_location(m_made.network->url().toString())
    , m_owners(owners)
{
    connect(
        m_made.source.get(), &PackageSource::updateRequired, this, &PackageSource::updateRequired);
}

TrackedSource::~TrackedSource()
{
    for (auto it = m_owners.begin(); it != m_owners.end();)
        it = it.value() == this ? m_owners.erase(it) : std::next(it);
}

std::unique_ptr<PackageAccessor> TrackedSource::getAccessor()
{
    auto accessor = m_made.source->getAccessor();
    m_owners.insert(accessor.get(), this);
    return accessor;
}

QString TrackedSource::refusalOf(const PackageAccessor &snapshot) const
{
    if (!snapshot.isRefused())
        return {};
    if (!m_made.network)
        return tr("some of its files can't be read");
    return m_made.service ? tr("its ledger was refused: damaged, or not signed for this program")
                          : tr("its list of packages was refused: damaged, or larger than 4 MiB");
}

} // namespace nk::pm::app

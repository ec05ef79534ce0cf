// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/watchedpointer.h"
#include "repository/packagerepository.h"

#include <QPointer>
#include <QSharedPointer>

namespace nk::pm {

/// The packageProvider property of a QML-facing object, and the repository behind it, which may die
/// at any moment. When to update and what to emit is each owner's own rule.
class ProviderConnection
{
public:
    QObject *provider() const { return m_provider.get(); }
    PackageRepository *repository() const { return m_repository.data(); }
    /// The repository's index; null without a repository.
    QSharedPointer<PackageIndex> packageIndex() const;

    /// Follows \a provider: from now on its repository's packageIndexChanged() calls \a slot of
    /// \a owner. An object that is no IPackageProvider is logged and then is the same as null.
    /// False, with nothing done, if \a provider is the present one.
    template<typename Owner>
    bool follow(QObject *provider, Owner *owner, void (Owner::*slot)())
    {
        if (m_provider.holds(provider))
            return false;
        if (m_repository)
            QObject::disconnect(m_repository, nullptr, owner, nullptr);
        assign(provider);
        if (m_repository)
            QObject::connect(m_repository, &PackageRepository::packageIndexChanged, owner, slot);
        return true;
    }

private:
    void assign(QObject *provider);

    WatchedPointer<QObject> m_provider;
    QPointer<PackageRepository> m_repository;
};

} // namespace nk::pm

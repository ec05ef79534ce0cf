// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/watchedpointer.h"
#include "repository/packagerepository.h"

#include <QSharedPointer>

namespace nk::pm {

/// The packageProvider property of a QML-facing object, and the repository behind it, which may die
/// at any moment. When to update and what to emit is each owner's own rule.
class ProviderConnection
{
public:
    QObject *provider() const { return m_provider.get(); }
    /// The repository's index; null without a repository.
    QSharedPointer<PackageIndex> packageIndex() const;

    /// Follows \a provider: from now on its repository's packageIndexChanged() calls \a function.
    /// An object that is no IPackageProvider is logged and then is the same as null. False, with
    /// nothing done, if \a provider is the present one.
    template<typename Function>
    bool follow(QObject *provider, Function function)
    {
        if (m_provider.holds(provider))
            return false;
        assign(provider);
        m_repository.connect(&PackageRepository::packageIndexChanged, function);
        return true;
    }

private:
    void assign(QObject *provider);

    WatchedPointer<QObject> m_provider;
    WatchedPointer<PackageRepository> m_repository;
};

} // namespace nk::pm

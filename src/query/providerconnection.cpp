// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/providerconnection.h"

#include "index/packageindex.h"
#include "repository/ipackageprovider.h"

#include <QDebug>
#include <QLoggingCategory>

namespace nk::pm {

namespace {
Q_LOGGING_CATEGORY(lcPackages, "norvak.packages", QtInfoMsg)
} // namespace

QSharedPointer<PackageIndex> ProviderConnection::packageIndex() const
{
    return m_repository ? m_repository->packageIndex() : QSharedPointer<PackageIndex>();
}

void ProviderConnection::assign(QObject *provider)
{
    auto *interface = qobject_cast<IPackageProvider *>(provider);
    if (provider && !interface)
        qCCritical(lcPackages) << "Object" << provider
                               << "does not implement the IPackageProvider interface";
    m_provider.assign(interface ? provider : nullptr);
    m_repository = interface ? interface->packageRepository() : nullptr;
}

} // namespace nk::pm

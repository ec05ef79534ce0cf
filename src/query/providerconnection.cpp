// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/providerconnection.h"

#include "index/packageindex.h"
#include "references/logging.h"
#include "repository/ipackageprovider.h"

#include <QDebug>

namespace nk::pm {

QSharedPointer<PackageIndex> ProviderConnection::packageIndex() const
{
    const PackageRepository *repository = m_repository.get();
    return repository ? repository->packageIndex() : QSharedPointer<PackageIndex>();
}

void ProviderConnection::assign(QObject *provider)
{
    auto *implementation = qobject_cast<IPackageProvider *>(provider);
    if (provider && !implementation)
        qCCritical(lcPackages) << "Object" << provider
                               << "does not implement the IPackageProvider interface";
    m_provider.replace(implementation ? provider : nullptr);
    m_repository.replace(nullptr); // the other provider's may be the same
    m_repository.replace(implementation ? implementation->packageRepository() : nullptr);
}

} // namespace nk::pm

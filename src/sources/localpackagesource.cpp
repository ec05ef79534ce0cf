// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localpackagesource.h"

#include "sources/localpackageaccessor.h"

namespace nk::pm {

struct LocalPackageSourcePrivate
{
    LocalPackageSource *q;
    QString path;
};

LocalPackageSource::LocalPackageSource(const QString &path, QObject *parent)
    : PackageSource(parent)
    , d(new LocalPackageSourcePrivate{this, path})
{}

LocalPackageSource::~LocalPackageSource() = default;

int LocalPackageSource::priority() const
{
    return 3;
}

std::unique_ptr<PackageAccessor> LocalPackageSource::getAccessor()
{
    return std::make_unique<LocalPackageAccessor>(d->path);
}

} // namespace nk::pm

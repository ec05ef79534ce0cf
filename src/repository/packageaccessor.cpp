// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"

namespace nk::pm {

PackageAccessor::PackageAccessor() = default;
PackageAccessor::PackageAccessor(const PackageAccessor &) = default;
PackageAccessor &PackageAccessor::operator=(const PackageAccessor &) = default;
PackageAccessor::~PackageAccessor() = default;

QByteArray PackageAccessor::issuerKey(int) const
{
    return {};
}

bool PackageAccessor::isRefused() const
{
    return false;
}

std::optional<QVector<PackageFileInfo>> PackageAccessor::files(int) const
{
    return {};
}

std::function<nk::Request *()> PackageAccessor::fileDownload(const QString &) const
{
    return {};
}

} // namespace nk::pm

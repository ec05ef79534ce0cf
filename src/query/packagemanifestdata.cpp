// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagemanifestdata.h"

namespace nk::pm {

PackageManifestData::PackageManifestData(QObject *parent)
    : QQmlPropertyMap(this, parent)
{}

QVariant PackageManifestData::updateValue(const QString &key, const QVariant &input)
{
    Q_UNUSED(key)
    Q_UNUSED(input)
    return {};
}

} // namespace nk::pm

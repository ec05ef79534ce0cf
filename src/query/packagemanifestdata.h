// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QQmlPropertyMap>

namespace nk::pm {

/// The map of a PackageData. What QML writes into it isn't kept: the key's value becomes invalid.
class PackageManifestData : public QQmlPropertyMap
{
    Q_OBJECT

public:
    explicit PackageManifestData(QObject *parent);

protected:
    QVariant updateValue(const QString &key, const QVariant &input) override;
};

} // namespace nk::pm

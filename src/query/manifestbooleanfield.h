// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

namespace nk::pm {

/// A truth value of the manifest. Only a JSON boolean overrides the default.
class NK_PM_EXPORT ManifestBooleanField : public ManifestField
{
    Q_OBJECT
    Q_PROPERTY(bool defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    explicit ManifestBooleanField(QObject *parent = nullptr);
    ~ManifestBooleanField() override;

    bool defaultValue() const { return m_defaultValue; }
    void setDefaultValue(bool value);

Q_SIGNALS:
    void defaultValueChanged();

protected:
    /// A bool.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    bool m_defaultValue = false;
};

} // namespace nk::pm

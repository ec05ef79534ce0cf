// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

namespace nk::pm {

/// A truth value of the manifest. Only a JSON boolean overrides the default.
class NK_PM_EXPORT ManifestBooleanField : public ManifestField
{
    Q_OBJECT
    /// What is read where the manifest holds no boolean; false at first.
    Q_PROPERTY(bool defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    /// A field without a name, which reads the default everywhere.
    explicit ManifestBooleanField(QObject *parent = nullptr);
    ~ManifestBooleanField() override;

    /// As it was set.
    bool defaultValue() const { return m_defaultValue; }
    /// Emits defaultValueChanged(), then updateRequested(), unless it is the present one.
    void setDefaultValue(bool value);

Q_SIGNALS:
    /// From within the setter.
    void defaultValueChanged();

protected:
    /// A bool.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    bool m_defaultValue = false;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

#include <QSizeF>

namespace nk::pm {

/// A size of the manifest: an array of two numbers, width first, in whatever unit the manifest
/// means. Negative numbers count as 0, further elements are ignored.
class NK_PM_EXPORT ManifestSizeField : public ManifestField
{
    Q_OBJECT
    /// What is read where the manifest holds no two numbers; 0 by 0 at first, which is valid. It is
    /// given as it stands, also if it is negative.
    Q_PROPERTY(
        QSizeF defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    /// A field without a name, which reads the default everywhere.
    explicit ManifestSizeField(QObject *parent = nullptr);
    ~ManifestSizeField() override;

    /// As it was set.
    QSizeF defaultValue() const { return m_defaultValue; }
    /// Emits defaultValueChanged(), then updateRequested(). A difference below the grain of
    /// qFuzzyCompare() is no change.
    void setDefaultValue(const QSizeF &value);

Q_SIGNALS:
    /// From within the setter.
    void defaultValueChanged();

protected:
    /// A QSizeF.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    QSizeF m_defaultValue{0.0, 0.0};
};

} // namespace nk::pm

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
    Q_PROPERTY(
        QSizeF defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    explicit ManifestSizeField(QObject *parent = nullptr);
    ~ManifestSizeField() override;

    QSizeF defaultValue() const { return m_defaultValue; }
    /// A difference below the grain of qFuzzyCompare() is no change.
    void setDefaultValue(const QSizeF &value);

Q_SIGNALS:
    void defaultValueChanged();

protected:
    /// A QSizeF.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    QSizeF m_defaultValue{0.0, 0.0};
};

} // namespace nk::pm

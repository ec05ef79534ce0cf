// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

namespace nk::pm {

/// A text of the manifest. One that begins with "id:" names a translation: what follows is given to
/// qtTrId(), so that the translators installed at the time of reading decide.
class NK_PM_EXPORT ManifestStringField : public ManifestField
{
    Q_OBJECT
    /// What is read where the manifest holds no string; null at first. It is given as it stands,
    /// also if it begins with "id:".
    Q_PROPERTY(
        QString defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    /// A field without a name, which reads the default everywhere.
    explicit ManifestStringField(QObject *parent = nullptr);
    ~ManifestStringField() override;

    /// As it was set.
    QString defaultValue() const { return m_defaultValue; }
    /// Emits defaultValueChanged(), then updateRequested(), unless it is the present one.
    void setDefaultValue(const QString &value);

Q_SIGNALS:
    /// From within the setter.
    void defaultValueChanged();

protected:
    /// A QString.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    QString m_defaultValue;
};

} // namespace nk::pm

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
    Q_PROPERTY(
        QString defaultValue READ defaultValue WRITE setDefaultValue NOTIFY defaultValueChanged)

public:
    explicit ManifestStringField(QObject *parent = nullptr);
    ~ManifestStringField() override;

    QString defaultValue() const { return m_defaultValue; }
    /// Given as it stands, also if it begins with "id:".
    void setDefaultValue(const QString &value);

Q_SIGNALS:
    void defaultValueChanged();

protected:
    /// A QString.
    QVariant convert(const QJsonValue &value, const PackageNode *node) override;

private:
    QString m_defaultValue;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifeststringfield.h"

#include "query/inturn.h"

#include <QCoreApplication>

namespace nk::pm {

ManifestStringField::ManifestStringField(QObject *parent)
    : ManifestField(parent)
{}

ManifestStringField::~ManifestStringField() = default;

void ManifestStringField::setDefaultValue(const QString &value)
{
    if (m_defaultValue == value)
        return;
    m_defaultValue = value;
    callInTurn(
        this, &ManifestStringField::defaultValueChanged, &ManifestStringField::updateRequested);
}

QVariant ManifestStringField::convert(const QJsonValue &value, const PackageNode *node)
{
    Q_UNUSED(node)
    if (!value.isString())
        return m_defaultValue;
    const QString text = value.toString();
    const QLatin1String translationPrefix("id:");
    if (!text.startsWith(translationPrefix))
        return text;
    return qtTrId(text.mid(translationPrefix.size()).toLatin1().constData());
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestbooleanfield.h"

#include "query/inturn.h"

namespace nk::pm {

ManifestBooleanField::ManifestBooleanField(QObject *parent)
    : ManifestField(parent)
{}

ManifestBooleanField::~ManifestBooleanField() = default;

void ManifestBooleanField::setDefaultValue(bool value)
{
    if (m_defaultValue == value)
        return;
    m_defaultValue = value;
    callInTurn(
        this, &ManifestBooleanField::defaultValueChanged, &ManifestBooleanField::updateRequested);
}

QVariant ManifestBooleanField::convert(const QJsonValue &value, const PackageNode *node)
{
    Q_UNUSED(node)
    return value.toBool(m_defaultValue);
}

} // namespace nk::pm

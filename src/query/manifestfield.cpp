// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestfield.h"

#include "index/packageindexnode.h"
#include "query/inturn.h"

namespace nk::pm {

ManifestField::ManifestField(QObject *parent)
    : QObject(parent)
{}

ManifestField::~ManifestField() = default;

void ManifestField::setName(const QString &name)
{
    if (m_name == name)
        return;
    m_name = name;
    callInTurn(this, &ManifestField::nameChanged, &ManifestField::updateRequested);
}

QVariant ManifestField::read(const PackageNode *node)
{
    return convert(node ? node->manifestValue(m_name) : QJsonValue(QJsonValue::Undefined), node);
}

QVariant ManifestField::convert(const QJsonValue &value, const PackageNode *node)
{
    Q_UNUSED(node)
    return value;
}

bool ManifestField::isStatusDependent() const
{
    return false;
}

} // namespace nk::pm

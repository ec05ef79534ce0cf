// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestsizefield.h"

#include "query/inturn.h"

#include <QJsonArray>

namespace nk::pm {

ManifestSizeField::ManifestSizeField(QObject *parent)
    : ManifestField(parent)
{}

ManifestSizeField::~ManifestSizeField() = default;

void ManifestSizeField::setDefaultValue(const QSizeF &value)
{
    if (qFuzzyCompare(m_defaultValue.width(), value.width())
        && qFuzzyCompare(m_defaultValue.height(), value.height()))
        return;
    m_defaultValue = value;
    callInTurn(this, &ManifestSizeField::defaultValueChanged, &ManifestSizeField::updateRequested);
}

QVariant ManifestSizeField::convert(const QJsonValue &value, const PackageNode *node)
{
    Q_UNUSED(node)
    const QJsonArray size = value.toArray();
    const QJsonValue width = size.at(0);
    const QJsonValue height = size.at(1);
    if (!width.isDouble() || !height.isDouble())
        return m_defaultValue;
    return QSizeF(qMax(0.0, width.toDouble()), qMax(0.0, height.toDouble()));
}

} // namespace nk::pm

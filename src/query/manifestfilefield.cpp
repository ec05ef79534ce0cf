// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestfilefield.h"

#include "index/packageindexnode.h"

#include <QUrl>

namespace nk::pm {

ManifestFileField::ManifestFileField(QObject *parent)
    : ManifestField(parent)
{}

ManifestFileField::~ManifestFileField() = default;

QVariant ManifestFileField::convert(const QJsonValue &value, const PackageNode *node)
{
    if (!node || !value.isString())
        return QUrl();
    return node->fileUrl(value.toString());
}

bool ManifestFileField::isStatusDependent() const
{
    return true;
}

} // namespace nk::pm

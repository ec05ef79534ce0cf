// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/sortbyintegerfield.h"

#include "index/numberorder.h"
#include "index/packageindexnode.h"

namespace nk::pm {

SortByIntegerField::SortByIntegerField(QObject *parent)
    : SortByField(parent)
{}

SortByIntegerField::~SortByIntegerField() = default;

std::function<bool(PackageNode *, PackageNode *)> SortByIntegerField::sortFunction()
{
    if (name().isEmpty())
        return {};
    return NumberOrder{
        [field = name()](const PackageNode &node) { return node.manifestValue(field).toInt(0); }};
}

} // namespace nk::pm

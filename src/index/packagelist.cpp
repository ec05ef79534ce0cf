// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packagelist.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

namespace nk::pm {

PackageList::PackageList() = default;

PackageList::PackageList(QSharedPointer<PackageIndex> index, const QVector<PackageNode *> &packages)
    : m_index(std::move(index))
    , m_packages(packages)
{}

QString PackageList::id(int i) const
{
    const PackageNode *node = m_packages.value(i);
    return node ? node->id().toString() : QString();
}

} // namespace nk::pm

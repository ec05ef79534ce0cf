// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "indexsummary.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "repository/packageaccessor.h"

namespace nk::pm::app {

IndexSummary summarize(const QSharedPointer<PackageIndex> &index)
{
    IndexSummary summary;
    summary.index = index;
    QHash<QString, int> exactly;
    const PackageList packages = PackageIndex::selectPackages(index, {}, {}, {});
    for (const PackageNode *package : packages) {
        ++exactly[package->type().toString()];
        ++summary.packagesBySnapshot[package->accessor()];
    }
    for (auto it = exactly.cbegin(); it != exactly.cend(); ++it) {
        QStringList levels = it.key().split(QLatin1Char(':'), Qt::SkipEmptyParts);
        for (; !levels.isEmpty(); levels.removeLast())
            summary.packagesByType[levels] += it.value();
    }
    for (int i = 0; i < index->accessorCount(); ++i) {
        if (index->accessor(i)->isRefused())
            summary.refused.append(index->accessor(i));
    }
    summary.packages = packages.size();
    summary.keywords = PackageIndex::selectKeywords(index, {}).size();
    return summary;
}

} // namespace nk::pm::app

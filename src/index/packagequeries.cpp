// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordlist.h"
#include "index/numberorder.h"
#include "index/packageindex.h"
#include "index/packageindex_p.h"
#include "index/packagelist.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace nk::pm {

namespace {

void sortByNumber(QVector<PackageNode *> &packages, const NumberOrder &order)
{
    std::vector<std::pair<int, PackageNode *>> numbered;
    numbered.reserve(std::size_t(packages.size()));
    for (PackageNode *package : qAsConst(packages))
        numbered.emplace_back(order.numberOf(*package), package);
    std::stable_sort(numbered.begin(), numbered.end(), [](const auto &a, const auto &b) {
        return a.first < b.first;
    });
    std::transform(numbered.begin(), numbered.end(), packages.begin(), [](const auto &entry) {
        return entry.second;
    });
}

} // namespace

PackageList PackageIndex::selectPackages(
    QSharedPointer<PackageIndex> index, const QString &type,
    std::function<bool(PackageNode *)> matcher,
    std::function<bool(PackageNode *, PackageNode *)> sorter)
{
    if (!index)
        return PackageList();
    const PackageIndexPrivate &d = *index->d;
    QPair<int, int> range(0, d.packages.size() - 1);
    if (!type.isEmpty()) {
        const auto known = d.typeRanges.constFind(QStringRef(&type));
        if (known == d.typeRanges.constEnd())
            return PackageList();
        range = *known;
    }

    // By reference: the algorithms would copy the functions, with all that they captured.
    QVector<PackageNode *> hits;
    if (matcher) {
        const auto first = d.packages.constBegin() + range.first;
        const auto end = d.packages.constBegin() + range.second + 1;
        std::copy_if(first, end, std::back_inserter(hits), [&matcher](PackageNode *node) {
            return matcher(node);
        });
    } else {
        hits = d.packages.mid(range.first, range.second - range.first + 1);
    }
    if (const auto *order = sorter.target<NumberOrder>()) {
        sortByNumber(hits, *order);
    } else if (sorter) {
        std::stable_sort(hits.begin(), hits.end(), [&sorter](PackageNode *a, PackageNode *b) {
            return sorter(a, b);
        });
    }
    return PackageList(std::move(index), hits);
}

KeywordList PackageIndex::selectKeywords(
    QSharedPointer<PackageIndex> index, std::function<bool(KeywordNode *)> matcher)
{
    if (!index)
        return KeywordList();
    QVector<KeywordNode const *> hits;
    for (KeywordNode *keyword : qAsConst(index->d->keywords)) {
        if (!matcher || matcher(keyword))
            hits.append(keyword);
    }
    return KeywordList(std::move(index), hits);
}

PackageNode *PackageIndex::getPackage(const QStringRef &id) const
{
    PackageIndexNode *node = d->nodes.value(id);
    if (!node || node->kind() != PackageIndexNode::Package)
        return nullptr;
    return static_cast<PackageNode *>(node);
}

KeywordNode *PackageIndex::getKeyword(const QStringRef &id) const
{
    PackageIndexNode *node = d->nodes.value(id);
    if (!node || node->kind() != PackageIndexNode::Keyword)
        return nullptr;
    return static_cast<KeywordNode *>(node);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordlist.h"
#include "index/packageindex.h"
#include "index/packageindex_p.h"
#include "index/packagelist.h"

#include <algorithm>
#include <iterator>

namespace nk::pm {

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
    if (sorter) {
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
    for (KeywordNode *keyword : index->d->keywords) {
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

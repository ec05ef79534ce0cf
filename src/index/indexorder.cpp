// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/indexorder.h"

#include "index/packageindexnode.h"

#include <algorithm>
#include <vector>

namespace nk::pm {

namespace {

/// A package with what it is sorted by, so that a comparison neither computes nor copies a text.
struct SortEntry
{
    QStringRef type;
    QString key;
    PackageNode *node;
};

bool operator<(const SortEntry &a, const SortEntry &b)
{
    if (const int order = a.type.compare(b.type))
        return order < 0;
    if (const int order = QString::compare(a.key, b.key, Qt::CaseInsensitive))
        return order < 0;
    return a.node->id() < b.node->id(); // keys that differ in case only
}

/// The prefixes of \a type that get a range: before each ":", and the whole.
QVector<QStringRef> typePrefixes(const QStringRef &type)
{
    QVector<QStringRef> prefixes;
    int end = type.indexOf(QLatin1Char(':'));
    while (end >= 0 && prefixes.size() < maxTypeLevels - 1) {
        prefixes.append(type.left(end));
        end = type.indexOf(QLatin1Char(':'), end + 1);
    }
    prefixes.append(type);
    return prefixes;
}

} // namespace

void sortKeywords(QVector<KeywordNode *> &keywords)
{
    std::sort(keywords.begin(), keywords.end(), [](KeywordNode *a, KeywordNode *b) {
        const int order = a->displayString().compare(b->displayString(), Qt::CaseInsensitive);
        return order ? order < 0 : a->id() < b->id();
    });
}

void sortPackages(QVector<PackageNode *> &packages)
{
    std::vector<SortEntry> entries;
    entries.reserve(size_t(packages.size()));
    for (PackageNode *node : qAsConst(packages))
        entries.push_back({node->type(), node->sortKey(), node});
    std::sort(entries.begin(), entries.end());
    std::transform(entries.begin(), entries.end(), packages.begin(), [](const SortEntry &entry) {
        return entry.node;
    });
}

QMap<QStringRef, QPair<int, int>> typeRangesOf(const QVector<PackageNode *> &packages)
{
    QMap<QStringRef, QPair<int, int>> ranges;
    for (int first = 0, next = 0; first < packages.size(); first = next) {
        const QStringRef type = packages.at(first)->type();
        while (next < packages.size() && packages.at(next)->type() == type)
            ++next;
        const auto prefixes = typePrefixes(type);
        for (const QStringRef &prefix : prefixes) {
            auto range = ranges.find(prefix);
            if (range == ranges.end())
                range = ranges.insert(prefix, {first, first});
            range->second = next - 1;
        }
    }
    return ranges;
}

} // namespace nk::pm

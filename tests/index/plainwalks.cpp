// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "plainwalks.h"

#include <algorithm>

namespace nk::pm::test::plain {

namespace {

const QSet<int> everything;

void walk(const NodeLink &link, const QSet<int> &allowed, QSet<KeywordNode *> &included)
{
    if (!allowed.isEmpty() && !allowed.contains(link.type))
        return;
    if (link.node->kind() != PackageIndexNode::Keyword)
        return;
    included.insert(static_cast<KeywordNode *>(link.node));
    for (const NodeLink &next : link.node->outLinks()) {
        if (link.type == IsA)
            walk(next, everything, included);
        else if (link.type == Contains)
            walk(next, {Contains, RelatesTo}, included);
        else if (link.type == Is || link.type == RelatesTo)
            walk(next, {RelatesTo}, included);
    }
}

bool isHit(const PackageIndexNode *node, const QStringRef &type)
{
    return node->kind() == PackageIndexNode::Package
           && static_cast<const PackageNode *>(node)->isOfType(type);
}

/// The chain test on link types from a keyword (first) to a package (last).
bool passesChainTest(const QVector<int> &path)
{
    QSet<int> allowed{IsA, Is, RelatesTo, Contains};
    for (int i = path.size() - 1; i >= 0; --i) {
        if (!allowed.contains(path.at(i)))
            return false;
        if (path.at(i) == Contains)
            allowed = {Contains, RelatesTo};
        else if (path.at(i) == RelatesTo)
            allowed = {RelatesTo};
        else if (path.at(i) == Is)
            allowed = {Contains};
    }
    return true;
}

bool search(const NodeLink &link, const QStringRef &type, QVector<int> &path)
{
    path.append(link.type);
    if (isHit(link.node, type))
        return passesChainTest(path);
    for (const NodeLink &next : link.node->inLinks()) {
        if (search(next, type, path))
            return true;
    }
    path.removeLast();
    return false;
}

} // namespace

QSet<KeywordNode *> keywords(const PackageNode &package)
{
    QSet<KeywordNode *> excluded;
    QSet<KeywordNode *> included;
    for (const NodeLink &link : package.outLinks()) {
        if (link.type == IsNotA && link.node->kind() == PackageIndexNode::Keyword)
            excluded.insert(static_cast<KeywordNode *>(link.node));
        walk(link, everything, included);
    }
    return included.subtract(excluded);
}

bool isUsedByType(const KeywordNode &keyword, const QStringRef &type)
{
    for (const NodeLink &link : keyword.inLinks()) {
        QVector<int> path;
        if (search(link, type, path))
            return true;
    }
    return false;
}

QString sortKey(const PackageNode &package)
{
    QStringList chain;
    QVector<const PackageIndexNode *> queue{&package};
    while (!queue.isEmpty()) {
        const PackageIndexNode *node = queue.takeFirst();
        for (const NodeLink &link : node->outLinks()) {
            if (link.type != IsA || link.node->kind() != PackageIndexNode::Keyword)
                continue;
            chain.prepend(static_cast<KeywordNode *>(link.node)->canonicalString().toString());
            queue.append(link.node);
        }
    }
    QVector<QPair<int, QString>> traits;
    for (const NodeLink &link : package.outLinks()) {
        if ((link.type == Contains || link.type == Is)
            && link.node->kind() == PackageIndexNode::Keyword) {
            const auto *keyword = static_cast<KeywordNode *>(link.node);
            traits.append({link.type, keyword->canonicalString().toString()});
        }
    }
    std::stable_sort(traits.begin(), traits.end(), [](const auto &a, const auto &b) {
        return a.first != b.first ? a.first < b.first : a.second.localeAwareCompare(b.second) < 0;
    });
    QString key = chain.join(">");
    if (!traits.isEmpty()) {
        if (!key.isEmpty())
            key += ":";
        QStringList texts;
        for (const auto &trait : traits)
            texts.append(trait.second);
        key += texts.join("&");
    }
    return key + "#" + package.id();
}

} // namespace nk::pm::test::plain

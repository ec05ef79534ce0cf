// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/sortkey.h"

#include "index/keywordfollow.h"
#include "index/packageindexnode.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <vector>

namespace nk::pm {

namespace {

QStringRef canonicalString(const NodeLink &link)
{
    return static_cast<const KeywordNode *>(link.node)->canonicalString();
}

bool leadsIntoCycle(const PackageIndexNode &package)
{
    const auto &links = package.outLinks();
    return std::any_of(links.begin(), links.end(), [](const NodeLink &link) {
        return isIsA(link) && static_cast<const KeywordNode *>(link.node)->leadsIntoCycle();
    });
}

/// The keywords above \a package, the nearest last, over all links but those in \a passedOver.
KeywordChain collectChain(const PackageIndexNode &package, const QSet<const NodeLink *> &passedOver)
{
    KeywordChain chain;
    std::vector<const PackageIndexNode *> queue{&package};
    for (size_t next = 0; next < queue.size() && !chain.isCut; ++next) {
        for (const NodeLink &link : queue[next]->outLinks()) {
            if (!isIsA(link) || passedOver.contains(&link))
                continue;
            chain.isCut = chain.terms.size() == maxSortChainTerms;
            if (chain.isCut)
                break;
            chain.terms.append(canonicalString(link));
            queue.push_back(link.node);
        }
    }
    std::reverse(chain.terms.begin(), chain.terms.end());
    return chain;
}

/// The IsA links that lead back to a keyword on the way to them: without these, what is above
/// \a package has no cycle.
QSet<const NodeLink *> linksThatCloseCycles(const PackageIndexNode &package)
{
    struct Frame
    {
        const PackageIndexNode *node;
        int nextLink = 0;
    };
    std::vector<Frame> path{{&package}};
    QHash<const PackageIndexNode *, bool> isOnPath{{&package, true}};
    QSet<const NodeLink *> closing;
    while (!path.empty()) {
        Frame &frame = path.back();
        if (frame.nextLink == frame.node->outLinks().size()) {
            isOnPath[frame.node] = false;
            path.pop_back();
            continue;
        }
        const NodeLink &link = frame.node->outLinks().at(frame.nextLink++);
        if (!isIsA(link))
            continue;
        if (!isOnPath.contains(link.node)) {
            isOnPath.insert(link.node, true);
            path.push_back({link.node});
        } else if (isOnPath.value(link.node)) {
            closing.insert(&link);
        }
    }
    return closing;
}

/// The canonical texts of what the package contains, then of what it is.
QVector<QStringRef> traitsOf(const PackageIndexNode &package)
{
    QVector<NodeLink> links;
    for (const NodeLink &link : package.outLinks()) {
        if ((link.type == Contains || link.type == Is) && isKeyword(link.node))
            links.append(link);
    }
    std::stable_sort(links.begin(), links.end(), [](const NodeLink &a, const NodeLink &b) {
        if (a.type != b.type)
            return a.type < b.type;
        return canonicalString(a).localeAwareCompare(canonicalString(b)) < 0;
    });
    QVector<QStringRef> traits;
    std::transform(links.cbegin(), links.cend(), std::back_inserter(traits), canonicalString);
    return traits;
}

void appendJoined(QString &text, const QVector<QStringRef> &parts, QChar separator)
{
    for (int i = 0; i < parts.size(); ++i) {
        if (i > 0)
            text += separator;
        text += parts.at(i);
    }
}

} // namespace

KeywordChain keywordChainOf(const PackageIndexNode &package)
{
    if (leadsIntoCycle(package))
        return collectChain(package, linksThatCloseCycles(package));
    return collectChain(package, {});
}

QString sortKeyOf(const PackageIndexNode &package, const KeywordChain &chain)
{
    QString key;
    appendJoined(key, chain.terms, QLatin1Char('>'));
    const QVector<QStringRef> traits = traitsOf(package);
    if (!traits.isEmpty() && !key.isEmpty())
        key += QLatin1Char(':');
    appendJoined(key, traits, QLatin1Char('&'));
    key += QLatin1Char('#');
    key += package.id();
    return key;
}

} // namespace nk::pm

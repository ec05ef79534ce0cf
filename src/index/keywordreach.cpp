// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordreach.h"

#include "index/keywordfollow.h"
#include "index/packageindex.h"
#include "index/packageindex_p.h"

#include <algorithm>

namespace nk::pm {

namespace {

// A way of getting to a keyword is the Follow that the last link passes on. A link that passes
// nothing on is one more.
constexpr quint8 allFollows = FollowRelated | FollowContainedAndRelated | FollowAll;
constexpr quint8 toItself = 8; // no other keyword but one that passes itself is found like this

quint8 wayBy(int linkType)
{
    const Follow follow = passedOnBy(linkType);
    return follow == FollowNone ? toItself : quint8(follow);
}

/// The ways of getting to a keyword by which its links of that type are followed.
quint8 waysThatFollow(int linkType)
{
    quint8 ways = 0;
    for (const Follow follow : {FollowRelated, FollowContainedAndRelated, FollowAll}) {
        if (follows(follow, linkType))
            ways |= follow;
    }
    return ways;
}

} // namespace

KeywordReach::KeywordReach(const PackageIndex &index, const Test &test)
    : m_serial(index.d->serial)
    , m_ways(std::size_t(index.d->keywords.size()), 0)
{
    std::vector<Step> open;
    for (const KeywordNode *keyword : qAsConst(index.d->keywords)) {
        if (test(*keyword))
            lead(keyword, allFollows | toItself, open);
    }
    while (!open.empty()) {
        const Step step = open.back();
        open.pop_back();
        for (const NodeLink &link : step.keyword->inLinks()) {
            if (isKeyword(link.node) && (step.ways & wayBy(link.type)) != 0)
                lead(static_cast<const KeywordNode *>(link.node), waysThatFollow(link.type), open);
        }
    }
}

/// Notes that \a keyword leads to one that passes, and what of that is new as still to be followed.
void KeywordReach::lead(const KeywordNode *keyword, quint8 ways, std::vector<Step> &open)
{
    quint8 &known = m_ways[std::size_t(keyword->m_number)];
    const quint8 added = ways & ~known;
    known |= ways;
    if (added != 0)
        open.push_back({keyword, added});
}

bool KeywordReach::leads(const KeywordNode *keyword, quint8 way) const
{
    return (m_ways[std::size_t(keyword->m_number)] & way) != 0;
}

bool KeywordReach::isFor(const PackageIndex &index) const
{
    return index.d->serial == m_serial;
}

bool KeywordReach::holdsFor(const PackageNode &package) const
{
    bool isReached = false;
    bool excludesOneThatPasses = false;
    for (const NodeLink &link : package.outLinks()) {
        if (!isKeyword(link.node))
            continue;
        const auto *keyword = static_cast<const KeywordNode *>(link.node);
        if (link.type == IsNotA)
            excludesOneThatPasses = excludesOneThatPasses || leads(keyword, toItself);
        else
            isReached = isReached || leads(keyword, wayBy(link.type));
    }
    if (!isReached || !excludesOneThatPasses)
        return isReached;
    // Perhaps nothing was reached but what the package is not.
    const auto keywords = package.keywords();
    return std::any_of(keywords.begin(), keywords.end(), [this](const KeywordNode *keyword) {
        return leads(keyword, toItself);
    });
}

} // namespace nk::pm

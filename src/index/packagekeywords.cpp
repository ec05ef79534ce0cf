// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packagekeywords.h"

#include "index/packageindexnode.h"

#include <QHash>

#include <vector>

namespace nk::pm {

namespace {

bool isKeyword(const PackageIndexNode *node)
{
    return node->kind() == PackageIndexNode::Keyword;
}

/// Which links of a keyword the walk of keywordsOf() follows; one bit each, so that a set of them
/// can be kept per keyword.
enum Follow : quint8 {
    FollowNone = 0,
    FollowRelated = 1,
    FollowContainedAndRelated = 2,
    FollowAll = 4,
};

bool follows(Follow allowed, int linkType)
{
    if (allowed == FollowContainedAndRelated)
        return linkType == Contains || linkType == RelatesTo;
    return allowed == FollowAll || linkType == RelatesTo;
}

/// What a keyword passes on when a link of this type led to it.
Follow passedOnBy(int linkType)
{
    switch (linkType) {
    case IsA:
        return FollowAll;
    case Contains:
        return FollowContainedAndRelated;
    case Is:
    case RelatesTo:
        return FollowRelated;
    default:
        return FollowNone;
    }
}

/// The state of one keywordsOf(): each keyword is gone through at most once for each Follow.
class KeywordCollector
{
public:
    void reach(const NodeLink &link)
    {
        if (!isKeyword(link.node))
            return;
        auto *keyword = static_cast<KeywordNode *>(link.node);
        const Follow follow = passedOnBy(link.type);
        quint8 &done = m_reached[keyword];
        if ((done & (follow | FollowAll)) == 0 && follow != FollowNone) {
            done |= follow;
            m_open.push_back({keyword, follow});
        }
    }

    void followAll()
    {
        while (!m_open.empty()) {
            const Step step = m_open.back();
            m_open.pop_back();
            for (const NodeLink &link : step.keyword->outLinks()) {
                if (follows(step.follow, link.type))
                    reach(link);
            }
        }
    }

    QSet<KeywordNode *> result() const
    {
        return QSet<KeywordNode *>(m_reached.keyBegin(), m_reached.keyEnd());
    }

private:
    struct Step
    {
        KeywordNode *keyword;
        Follow follow;
    };

    QHash<KeywordNode *, quint8> m_reached; // with the Follows that it was gone through for
    std::vector<Step> m_open;
};

} // namespace

QSet<KeywordNode *> keywordsOf(const PackageIndexNode &package)
{
    KeywordCollector collector;
    for (const NodeLink &link : package.outLinks())
        collector.reach(link);
    collector.followAll();
    QSet<KeywordNode *> keywords = collector.result();
    for (const NodeLink &link : package.outLinks()) {
        if (link.type == IsNotA && isKeyword(link.node))
            keywords.remove(static_cast<KeywordNode *>(link.node));
    }
    return keywords;
}

} // namespace nk::pm

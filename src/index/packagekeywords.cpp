// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packagekeywords.h"

#include "index/keywordfollow.h"
#include "index/packageindexnode.h"

#include <QHash>

#include <vector>

namespace nk::pm {

namespace {

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

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/graphwalks.h"

#include "index/linkchain.h"
#include "index/packageindexnode.h"

#include <QHash>
#include <QStringList>

#include <algorithm>
#include <optional>
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

/// The search of isReachedByType(): from a keyword against the links' direction, depth first.
///
/// A package that is of the type, but fails the chain test, stays on the path together with what a
/// later sibling appends, and each node that is left takes the last entry of the path off,
/// whichever it is. What a failed search leaves on the path is therefore not empty; it depends on
/// the node and on the path's state in front of it, so each pair of these is searched once.
class TypeSearch
{
public:
    explicit TypeSearch(const QStringRef &type)
        : m_type(type)
    {}

    bool isReached(const PackageIndexNode &keyword)
    {
        for (const NodeLink &link : keyword.inLinks()) {
            LinkChain path; // empty again for each link of the keyword itself
            while (!tryLink(link, LinkChain::Empty, path)) {
                if (searchOpenNodes())
                    return true;
            }
            if (m_hit)
                return true;
        }
        return false;
    }

private:
    /// A node under search, with what the searches of its links left behind so far.
    struct Frame
    {
        const PackageIndexNode *node;
        LinkChain::State state; // of the path that leads here
        int nextLink = 0;
        LinkChain left;
    };
    using Key = QPair<const PackageIndexNode *, int>;

    bool isHit(const PackageIndexNode *node) const
    {
        return node->kind() == PackageIndexNode::Package
               && static_cast<const PackageNode *>(node)->isOfType(m_type);
    }

    /// Searches over \a link behind a path in \a state and appends to \a left what stays on the
    /// path. False if the node behind the link has to be searched first, and was opened for it.
    bool tryLink(const NodeLink &link, LinkChain::State before, LinkChain &left)
    {
        const LinkChain::State state = LinkChain::next(left.state(before), link.type);
        if (isHit(link.node)) {
            m_hit = state != LinkChain::Broken;
            left.push(link.type, state);
            return true;
        }
        if (link.node->inLinks().isEmpty())
            return true;
        const Key key(link.node, state);
        const auto known = m_searched.constFind(key);
        if (known == m_searched.constEnd()) {
            m_searched.insert(key, std::nullopt);
            m_frames.push_back({link.node, state, 0, LinkChain()});
            return false;
        }
        // A node that is still open leads back to itself: the cycle adds nothing.
        if (const std::optional<LinkChain> &below = *known; below && !below->isEmpty()) {
            LinkChain whole;
            whole.push(link.type, state);
            whole.append(*below);
            whole.pop();
            left.append(whole);
        }
        return true;
    }

    /// Searches the open nodes to their end; true at the first hit.
    bool searchOpenNodes()
    {
        while (!m_frames.empty()) {
            Frame &frame = m_frames.back();
            if (frame.nextLink == frame.node->inLinks().size()) {
                m_searched[Key(frame.node, frame.state)] = frame.left;
                m_frames.pop_back();
            } else if (tryLink(frame.node->inLinks().at(frame.nextLink), frame.state, frame.left)) {
                ++frame.nextLink;
            }
            if (m_hit)
                return true;
        }
        return false;
    }

    const QStringRef m_type;
    bool m_hit = false;
    std::vector<Frame> m_frames;
    QHash<Key, std::optional<LinkChain>> m_searched; // no value while the node is open
};

QVector<NodeLink> traitsOf(const PackageIndexNode &package)
{
    QVector<NodeLink> traits;
    for (const NodeLink &link : package.outLinks()) {
        if ((link.type == Contains || link.type == Is) && isKeyword(link.node))
            traits.append(link);
    }
    return traits;
}

QStringRef canonicalString(const NodeLink &link)
{
    return static_cast<const KeywordNode *>(link.node)->canonicalString();
}

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

bool isReachedByType(const PackageIndexNode &keyword, const QStringRef &type)
{
    return TypeSearch(type).isReached(keyword);
}

KeywordChain keywordChainOf(const PackageIndexNode &package)
{
    KeywordChain chain;
    std::vector<const PackageIndexNode *> queue{&package};
    for (size_t next = 0; next < queue.size() && !chain.isCut; ++next) {
        for (const NodeLink &link : queue[next]->outLinks()) {
            if (link.type != IsA || !isKeyword(link.node))
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

QString sortKeyOf(const PackageIndexNode &package, const KeywordChain &chain)
{
    QString key;
    for (int i = 0; i < chain.terms.size(); ++i) {
        if (i > 0)
            key += QLatin1Char('>');
        key += chain.terms.at(i);
    }

    QVector<NodeLink> traits = traitsOf(package);
    std::stable_sort(traits.begin(), traits.end(), [](const NodeLink &a, const NodeLink &b) {
        if (a.type != b.type)
            return a.type < b.type;
        return canonicalString(a).localeAwareCompare(canonicalString(b)) < 0;
    });
    if (!traits.isEmpty() && !key.isEmpty())
        key += QLatin1Char(':');
    for (int i = 0; i < traits.size(); ++i) {
        if (i > 0)
            key += QLatin1Char('&');
        key += canonicalString(traits.at(i));
    }

    key += QLatin1Char('#');
    key += package.id();
    return key;
}

} // namespace nk::pm

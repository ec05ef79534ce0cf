// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/typesearch.h"

#include "index/linkchain.h"
#include "index/packageindexnode.h"

#include <QHash>
#include <QPair>

#include <optional>
#include <vector>

namespace nk::pm {

namespace {

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
            left.push(state);
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
            whole.push(state);
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

} // namespace

bool isReachedByType(const PackageIndexNode &keyword, const QStringRef &type)
{
    return TypeSearch(type).isReached(keyword);
}

} // namespace nk::pm

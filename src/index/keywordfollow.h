// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/linktypes.h"
#include "index/packageindexnode.h"

namespace nk::pm {

/// Which links of a keyword hold for a package too that got to the keyword. One bit each, so that a
/// set of them can be kept per keyword.
enum Follow : quint8 {
    FollowNone = 0,
    FollowRelated = 1,
    FollowContainedAndRelated = 2,
    FollowAll = 4,
};

inline bool follows(Follow allowed, int linkType)
{
    if (allowed == FollowContainedAndRelated)
        return linkType == Contains || linkType == RelatesTo;
    return allowed == FollowAll || (allowed == FollowRelated && linkType == RelatesTo);
}

/// What a keyword passes on when a link of this type led to it.
inline Follow passedOnBy(int linkType)
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

inline bool isKeyword(const PackageIndexNode *node)
{
    return node->kind() == PackageIndexNode::Keyword;
}

/// Whether the far end of \a link is a keyword, and the near end one of its kind.
inline bool isIsA(const NodeLink &link)
{
    return link.type == IsA && isKeyword(link.node);
}

} // namespace nk::pm

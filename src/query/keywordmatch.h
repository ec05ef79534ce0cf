// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/keywordreach.h"

#include <memory>

namespace nk::pm {

class PackageNode;

/// The match function of a matcher that asks for a keyword: true for packages one of whose
/// keywords passes a test.
///
/// A copyable value that may be called on any thread, several at once. The first packages are asked
/// for their keywords; when more come, as in every selection, one KeywordReach answers for all of
/// an index. Copies share it.
class KeywordMatch
{
public:
    /// \a test owns copies of all it needs.
    explicit KeywordMatch(KeywordReach::Test test);

    bool operator()(PackageNode *node) const;

private:
    struct Shared;
    std::shared_ptr<Shared> d;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <functional>
#include <vector>

namespace nk::pm {

class KeywordNode;
class PackageIndex;
class PackageNode;

/// Which packages of one index have a keyword that passes a test.
///
/// The same as testing each of PackageNode::keywords(), package after package; but each keyword is
/// tested only once, and the links are followed once too, from the keywords that pass back to all
/// from which they are reached. Read-only after construction, from any thread.
class KeywordReach
{
public:
    using Test = std::function<bool(const KeywordNode &)>;

    /// Takes time by the number of keywords and of the links between them. Nothing of \a index is
    /// referred to afterwards.
    KeywordReach(const PackageIndex &index, const Test &test);

    /// Whether this was made for \a index. False for one at the same address that came later.
    bool isFor(const PackageIndex &index) const;
    /// Whether one of the keywords of \a package, which is of that index, passes.
    bool holdsFor(const PackageNode &package) const;

private:
    /// A keyword, and the ways of getting to it by which one that passes is found.
    struct Step
    {
        const KeywordNode *keyword;
        quint8 ways;
    };

    void lead(const KeywordNode *keyword, quint8 ways, std::vector<Step> &open);
    bool leads(const KeywordNode *keyword, quint8 way) const;

    const quint64 m_serial;
    std::vector<quint8> m_ways; // by the keywords' numbers
};

} // namespace nk::pm

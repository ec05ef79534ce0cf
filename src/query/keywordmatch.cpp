// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/keywordmatch.h"

#include "index/packageindexnode.h"

#include <algorithm>
#include <atomic>

namespace nk::pm {

namespace {

/// So many packages are asked one by one before all keywords of their index are: that takes about
/// as long in a catalogue of ten thousand keywords.
constexpr int singleQuestions = 256;

} // namespace

struct KeywordMatch::Shared
{
    explicit Shared(KeywordReach::Test keywordTest)
        : test(std::move(keywordTest))
    {}

    const KeywordReach::Test test;
    std::shared_ptr<const KeywordReach> reach; // changed and read atomically
    std::atomic<int> asked{0};                 // since reach was made

    bool holdsForSingle(const PackageNode &package) const;
    std::shared_ptr<const KeywordReach> makeReach(const PackageIndex &index);
};

bool KeywordMatch::Shared::holdsForSingle(const PackageNode &package) const
{
    const auto keywords = package.keywords();
    return std::any_of(keywords.begin(), keywords.end(), [this](const KeywordNode *keyword) {
        return test(*keyword);
    });
}

std::shared_ptr<const KeywordReach> KeywordMatch::Shared::makeReach(const PackageIndex &index)
{
    auto made = std::make_shared<const KeywordReach>(index, test);
    std::atomic_store(&reach, made);
    asked = 0;
    return made;
}

KeywordMatch::KeywordMatch(KeywordReach::Test test)
    : d(std::make_shared<Shared>(std::move(test)))
{}

bool KeywordMatch::operator()(PackageNode *node) const
{
    auto reach = std::atomic_load(&d->reach);
    if (!reach || !reach->isFor(*node->index())) {
        if (d->asked.fetch_add(1) < singleQuestions)
            return d->holdsForSingle(*node);
        reach = d->makeReach(*node->index());
    }
    return reach->holdsFor(*node);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "packagequery.h"

#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagematchergroup.h"
#include "query/sortbyintegerfield.h"

namespace nk::pm::cli {

std::function<bool(PackageNode *)> matcherFor(const ListOptions &options)
{
    PackageMatcherGroup all;
    for (const auto &field : options.fields) {
        auto *matcher = new HasManifestField(&all);
        matcher->setName(field);
        all.addMatcher(matcher);
    }
    for (const auto &id : options.keywords) {
        auto *matcher = new HasKeyword(&all);
        matcher->setKeywordId(id);
        all.addMatcher(matcher);
    }
    MatchesKeywordSearch search;
    search.setSearchString(options.search);
    search.setMatchMode(
        options.fullMatch ? MatchesKeywordSearch::FullMatch : MatchesKeywordSearch::PartialMatch);
    all.addMatcher(&search);
    return all.matchFunction();
}

std::function<bool(PackageNode *, PackageNode *)> sorterFor(const ListOptions &options)
{
    SortByIntegerField sorter;
    sorter.setName(options.sortField);
    return sorter.sortFunction();
}

} // namespace nk::pm::cli

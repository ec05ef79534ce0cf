// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/matcheskeywordsearch.h"

#include "index/packageindexnode.h"
#include "query/inturn.h"
#include "query/keywordmatch.h"

namespace nk::pm {

struct MatchesKeywordSearchPrivate
{
    MatchesKeywordSearch *q;
    QString searchString;
    MatchesKeywordSearch::MatchMode matchMode = MatchesKeywordSearch::PartialMatch;

    /// What KeywordNode::matchLevel() must give at least.
    int requiredLevel() const { return matchMode == MatchesKeywordSearch::FullMatch ? 2 : 1; }
};

MatchesKeywordSearch::MatchesKeywordSearch(QObject *parent)
    : PackageMatcher(parent)
    , d(new MatchesKeywordSearchPrivate{this, {}})
{}

MatchesKeywordSearch::~MatchesKeywordSearch() = default;

MatchesKeywordSearch::MatchMode MatchesKeywordSearch::matchMode() const
{
    return d->matchMode;
}

void MatchesKeywordSearch::setMatchMode(MatchMode mode)
{
    if (d->matchMode == mode)
        return;
    d->matchMode = mode;
    callInTurn(
        this, &MatchesKeywordSearch::matchModeChanged, &MatchesKeywordSearch::updateRequested);
}

QString MatchesKeywordSearch::searchString() const
{
    return d->searchString;
}

void MatchesKeywordSearch::setSearchString(const QString &search)
{
    if (d->searchString == search)
        return;
    d->searchString = search;
    callInTurn(
        this, &MatchesKeywordSearch::searchStringChanged, &MatchesKeywordSearch::updateRequested);
}

std::function<bool(PackageNode *)> MatchesKeywordSearch::matchFunction()
{
    if (d->searchString.isEmpty())
        return {};
    return KeywordMatch(
        [search = d->searchString, level = d->requiredLevel()](const KeywordNode &keyword) {
            return keyword.matchLevel(QStringRef(&search)) >= level;
        });
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/haskeyword.h"

#include "index/packageindexnode.h"
#include "query/inturn.h"
#include "query/keywordmatch.h"

namespace nk::pm {

struct HasKeywordPrivate
{
    HasKeyword *q;
    QString keywordId;
};

HasKeyword::HasKeyword(QObject *parent)
    : PackageMatcher(parent)
    , d(new HasKeywordPrivate{this, {}})
{}

HasKeyword::~HasKeyword() = default;

QString HasKeyword::keywordId() const
{
    return d->keywordId;
}

void HasKeyword::setKeywordId(const QString &keywordId)
{
    if (d->keywordId == keywordId)
        return;
    d->keywordId = keywordId;
    callInTurn(this, &HasKeyword::keywordIdChanged, &HasKeyword::updateRequested);
}

std::function<bool(PackageNode *)> HasKeyword::matchFunction()
{
    if (d->keywordId.isEmpty())
        return {};
    return KeywordMatch(
        [id = d->keywordId](const KeywordNode &keyword) { return keyword.id() == id; });
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordlist.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"

namespace nk::pm {

KeywordList::KeywordList() = default;

KeywordList::KeywordList(
    QSharedPointer<PackageIndex> index, const QVector<KeywordNode const *> &keywords)
    : m_index(std::move(index))
    , m_keywords(keywords)
{}

QString KeywordList::id(int i) const
{
    const KeywordNode *node = m_keywords.value(i);
    return node ? node->id().toString() : QString();
}

QString KeywordList::displayString(int i) const
{
    const KeywordNode *node = m_keywords.value(i);
    return node ? node->displayString().toString() : QString();
}

} // namespace nk::pm

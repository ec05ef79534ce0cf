// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/indexlogging.h"
#include "index/keywordfollow.h"
#include "index/packageindex_p.h"

#include <algorithm>

namespace nk::pm {

namespace {

const KeywordNode *keywordOf(const NodeLink &link)
{
    return static_cast<const KeywordNode *>(link.node);
}

/// A keyword of the cycle into which \a keyword leads.
const KeywordNode *onCycle(const KeywordNode *keyword)
{
    QSet<const KeywordNode *> passed;
    while (!passed.contains(keyword)) {
        passed.insert(keyword);
        const auto &links = keyword->outLinks();
        keyword = keywordOf(*std::find_if(links.begin(), links.end(), [](const NodeLink &link) {
            return isIsA(link) && keywordOf(link)->leadsIntoCycle();
        }));
    }
    return keyword;
}

} // namespace

// Takes away, one after the other, the keywords whose IsA links all lead to keywords that are gone.
// What stays leads into a cycle.
void PackageIndexPrivate::markCycles()
{
    std::vector<qsizetype> linksLeft(size_t(keywords.size()));
    std::vector<const KeywordNode *> gone;
    for (const KeywordNode *keyword : qAsConst(keywords)) {
        const auto &links = keyword->outLinks();
        const auto count = std::count_if(links.begin(), links.end(), isIsA);
        linksLeft[size_t(keyword->m_number)] = count;
        if (count == 0)
            gone.push_back(keyword);
    }
    for (size_t next = 0; next < gone.size(); ++next) {
        for (const NodeLink &link : gone[next]->inLinks()) {
            if (isIsA(link) && --linksLeft[size_t(keywordOf(link)->m_number)] == 0)
                gone.push_back(keywordOf(link));
        }
    }
    const KeywordNode *first = nullptr;
    for (KeywordNode *keyword : qAsConst(keywords)) {
        keyword->m_leadsIntoCycle = linksLeft[size_t(keyword->m_number)] > 0;
        if (keyword->m_leadsIntoCycle && !first)
            first = keyword;
    }
    if (first)
        qCWarning(lcPackageIndex) << "Keyword" << onCycle(first)->id()
                                  << "leads back to itself by is_a links";
}

} // namespace nk::pm

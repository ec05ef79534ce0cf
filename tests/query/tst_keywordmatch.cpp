// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/keywordmatch.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"

#include <QtConcurrent>
#include <QtTest>

#include <algorithm>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Nodes = QVector<PackageNode *>;

KeywordReach::Test searchFor(const QString &search)
{
    return [search](const KeywordNode &keyword) {
        return keyword.matchLevel(QStringRef(&search)) > 0;
    };
}

/// What asking every package for its keywords gives.
Nodes plainHits(const Nodes &packages, const KeywordReach::Test &test)
{
    Nodes hits;
    for (PackageNode *package : packages) {
        const auto keywords = package->keywords();
        if (std::any_of(keywords.begin(), keywords.end(), [&test](const KeywordNode *keyword) {
                return test(*keyword);
            }))
            hits.append(package);
    }
    return hits;
}

Nodes hits(const Nodes &packages, const std::function<bool(PackageNode *)> &match)
{
    Nodes hits;
    std::copy_if(packages.begin(), packages.end(), std::back_inserter(hits), match);
    return hits;
}

} // namespace

class TestKeywordMatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void agreesWithPlainSearch();
    void manyThreadsAtOnce();

private:
    ScopedDataLocation m_location;
    QSharedPointer<PackageIndex> m_index;
    QSharedPointer<PackageIndex> m_other;
    Nodes m_packages;
    Nodes m_others;
};

void TestKeywordMatch::initTestCase()
{
    m_index = buildIndex(SyntheticCatalogue({2000, 300, 8000}, 1).contents());
    m_other = buildIndex(SyntheticCatalogue({2000, 300, 8000}, 2).contents());
    m_packages = PackageIndex::selectPackages(m_index, {}, {}, {}).packages();
    m_others = PackageIndex::selectPackages(m_other, {}, {}, {}).packages();
}

void TestKeywordMatch::agreesWithPlainSearch()
{
    Nodes mixed;
    for (int i = 0; i < m_packages.size(); ++i)
        mixed << m_packages.at(i) << m_others.at(i);
    for (const char *search : {"o", "dor", "dorf", "no such word"}) { // ever fewer hits
        const auto test = searchFor(search);
        const KeywordMatch match(test);
        for (const Nodes &packages : {m_packages, m_others, mixed})
            QCOMPARE(hits(packages, match), plainHits(packages, test));
    }
}

void TestKeywordMatch::manyThreadsAtOnce()
{
    const auto test = searchFor("dor");
    const Nodes expected = plainHits(m_packages, test);
    const Nodes expectedOfOthers = plainHits(m_others, test);
    const KeywordMatch match(test);
    QVector<QFuture<Nodes>> runs;
    for (int i = 0; i < 8; ++i)
        runs.append(QtConcurrent::run(hits, i % 2 ? m_packages : m_others, match));
    for (int i = 0; i < runs.size(); ++i)
        QCOMPARE(runs.at(i).result(), i % 2 ? expected : expectedOfOthers);
}

QTEST_GUILESS_MAIN(TestKeywordMatch)
#include "tst_keywordmatch.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/keywordmatch.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QRandomGenerator>
#include <QtConcurrent>
#include <QtTest>

#include <algorithm>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Nodes = QVector<PackageNode *>;

constexpr int packageCount = 600; // more than are asked one by one

/// Links of every type between packages and keywords at random, cycles and self links included. The
/// keywords are called "word 0" to "word 3".
QSharedPointer<PackageIndex> randomIndex(int keywords, int links, quint32 seed)
{
    QRandomGenerator random(seed);
    MemoryCatalogue catalogue;
    QStringList ids;
    for (int i = 0; i < keywords; ++i) {
        ids.append(QString("k%1").arg(i));
        catalogue.word(ids.last(), QString("word %1").arg(i % 4));
    }
    for (int i = 0; i < packageCount; ++i) {
        ids.append(QString("p%1").arg(i));
        catalogue.package(ids.last(), "t");
    }
    // Half of them from keywords, nearly all of them to keywords.
    for (int i = 0; i < links; ++i) {
        const int from = random.bounded(i % 2 ? keywords : ids.size());
        catalogue.link(ids.at(from), random.bounded(7), ids.at(random.bounded(keywords + 3)));
    }
    return buildIndex(catalogue);
}

Nodes packagesOf(const QSharedPointer<PackageIndex> &index)
{
    return PackageIndex::selectPackages(index, {}, {}, {}).packages();
}

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
    void agreesWithPlainSearch_data();
    void agreesWithPlainSearch();
    void manyThreadsAtOnce();
    void reachKnowsItsIndex();

private:
    ScopedDataLocation m_location;
};

void TestKeywordMatch::agreesWithPlainSearch_data()
{
    Columns<int, int>("keywords", "links")
        .row("few keywords, many links", 5, 1500)
        .row("some of everything", 30, 1200)
        .row("many keywords, few links", 300, 800);
}

void TestKeywordMatch::agreesWithPlainSearch()
{
    QFETCH(int, keywords);
    QFETCH(int, links);
    for (int round = 0; round < 5; ++round) {
        const auto index = randomIndex(keywords, links, 2 * round);
        const auto other = randomIndex(keywords, links, 2 * round + 1);
        const Nodes packages = packagesOf(index);
        const Nodes others = packagesOf(other);
        Nodes mixed;
        for (int i = 0; i < packageCount; ++i)
            mixed << packages.at(i) << others.at(i);
        const QString search = QString("word %1").arg(round % 5); // the last is no keyword's
        const auto test = searchFor(search);
        const KeywordMatch match(test);
        for (const Nodes &asked : {packages, others, mixed})
            QCOMPARE(hits(asked, match), plainHits(asked, test));
        QCOMPARE(plainHits(packages, test).isEmpty(), round % 5 == 4);
    }
}

void TestKeywordMatch::manyThreadsAtOnce()
{
    const auto index = randomIndex(30, 1200, 1);
    const auto other = randomIndex(30, 1200, 2);
    const QVector<Nodes> packages{packagesOf(index), packagesOf(other)};
    const auto test = searchFor("word 1");
    const KeywordMatch match(test);
    QVector<QFuture<Nodes>> runs;
    for (int i = 0; i < 8; ++i)
        runs.append(QtConcurrent::run(hits, packages.at(i % 2), match));
    for (int i = 0; i < runs.size(); ++i)
        QCOMPARE(runs.at(i).result(), plainHits(packages.at(i % 2), test));
}

/// Not taken for the reach of another index at the address of one that has gone.
void TestKeywordMatch::reachKnowsItsIndex()
{
    alignas(PackageIndex) char place[sizeof(PackageIndex)];
    auto *first = new (place) PackageIndex;
    const KeywordReach reach(*first, [](const KeywordNode &) { return true; });
    QVERIFY(reach.isFor(*first));
    first->~PackageIndex();
    auto *second = new (place) PackageIndex;
    QVERIFY(!reach.isFor(*second));
    second->~PackageIndex();
}

QTEST_GUILESS_MAIN(TestKeywordMatch)
#include "tst_keywordmatch.moc"

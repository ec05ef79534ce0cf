// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordreach.h"
#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// Links of every type between packages and keywords at random, cycles and self links included.
MemoryCatalogue randomGraph(int packages, int keywords, int links, QRandomGenerator &random)
{
    MemoryCatalogue catalogue;
    QStringList ids;
    for (int i = 0; i < keywords; ++i) {
        ids.append(QString("k%1").arg(i));
        catalogue.word(ids.last(), QString("word %1").arg(i % 4));
    }
    for (int i = 0; i < packages; ++i) {
        ids.append(QString("p%1").arg(i));
        catalogue.package(ids.last(), "t");
    }
    for (int i = 0; i < links; ++i)
        catalogue.link(
            ids.at(random.bounded(ids.size())), random.bounded(7),
            ids.at(random.bounded(ids.size())));
    return catalogue;
}

} // namespace

class TestKeywordReach : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithKeywords_data();
    void agreesWithKeywords();
    void knowsItsIndex();

private:
    ScopedDataLocation m_location;
};

void TestKeywordReach::agreesWithKeywords_data()
{
    Columns<int, int, int>("keywords", "links", "rounds")
        .row("few keywords, many links", 5, 40, 100)
        .row("trees, more or less", 30, 40, 100)
        .row("dense", 30, 150, 60);
}

void TestKeywordReach::agreesWithKeywords()
{
    QFETCH(int, keywords);
    QFETCH(int, links);
    QFETCH(int, rounds);
    QRandomGenerator random(11);
    int hits = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto index = buildIndex(randomGraph(12, keywords, links, random));
        const QString search = QString("word %1").arg(round % 5); // the last is no keyword's
        const auto passes = [&search](const KeywordNode *keyword) {
            return keyword->matchLevel(&search) == 2;
        };
        const KeywordReach reach(*index, [&](const KeywordNode &node) { return passes(&node); });
        for (const PackageNode *package : PackageIndex::selectPackages(index, {}, {}, {})) {
            const auto all = package->keywords();
            const bool holds = std::any_of(all.begin(), all.end(), passes);
            QCOMPARE(reach.holdsFor(*package), holds);
            hits += holds;
        }
    }
    QVERIFY(hits > rounds);
}

void TestKeywordReach::knowsItsIndex()
{
    const auto index = buildIndex(MemoryCatalogue());
    const KeywordReach reach(*index, [](const KeywordNode &) { return true; });
    QVERIFY(reach.isFor(*index));
    QVERIFY(!reach.isFor(*buildIndex(MemoryCatalogue())));
    // One at the address of another that has gone.
    alignas(PackageIndex) char place[sizeof(PackageIndex)];
    auto *first = new (place) PackageIndex;
    const KeywordReach reachOfFirst(*first, [](const KeywordNode &) { return true; });
    first->~PackageIndex();
    auto *second = new (place) PackageIndex;
    QVERIFY(!reachOfFirst.isFor(*second));
    second->~PackageIndex();
}

QTEST_GUILESS_MAIN(TestKeywordReach)
#include "tst_keywordreach.moc"

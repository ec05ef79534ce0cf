// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "plainwalks.h"

#include "index/packageindex.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QRandomGenerator>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int chainLength = 50000;
constexpr int diamonds = 40; // each doubles the number of paths

const QStringList packageTypes{"a", "a:b", "c"};
const QStringList queriedTypes{"a", "a:b", "c", "d"};

QStringList sortedIds(const QSet<KeywordNode *> &keywords)
{
    QStringList ids;
    for (const KeywordNode *node : keywords)
        ids.append(node->id().toString());
    ids.sort();
    return ids;
}

bool isUsed(const QSharedPointer<PackageIndex> &index, const QString &id, const QString &type)
{
    return keywordOf(index, id)->isUsedByType(&type);
}

/// Adds a random acyclic graph of packages and keywords whose names begin with \a prefix.
void addRandomGraph(MemoryCatalogue &catalogue, const QString &prefix, QRandomGenerator &random)
{
    const int nodeCount = random.bounded(2, 13);
    const int linkCount = random.bounded(nodeCount, 3 * nodeCount);
    const int packageShare = random.bounded(10, 60);
    // All types, and one that nobody knows; those that chains are made of more often.
    const QVector<int> linkTypes{IsA, Contains,  RelatesTo, Is,       IsA,  Contains,
                                 Is,  RelatesTo, IsNotA,    Requires, Uses, 11};
    for (int i = 0; i < nodeCount; ++i) {
        const QString id = prefix + QString::number(i);
        if (random.bounded(100) < packageShare)
            catalogue.package(id, packageTypes.at(random.bounded(packageTypes.size())));
        else
            catalogue.word(id, QString(QChar('a' + random.bounded(5))) + id);
    }
    for (int i = 0; i < linkCount; ++i) {
        const int to = random.bounded(nodeCount - 1);
        const int from = random.bounded(to + 1, nodeCount);
        const int copies = random.bounded(8) == 0 ? 2 : 1;
        for (int copy = 0; copy < copies; ++copy) {
            catalogue.link(
                prefix + QString::number(from), linkTypes.at(random.bounded(linkTypes.size())),
                prefix + QString::number(to));
        }
    }
}

/// A ladder of \a steps keywords from "top" down to "bottom", every two joined by a pair of links.
void addLadder(MemoryCatalogue &catalogue, int steps, int linkType)
{
    const auto name = [steps](int i) {
        return i == 0 ? QString("top") : i == steps ? QString("bottom") : QString("l%1").arg(i);
    };
    for (int i = 0; i <= steps; ++i)
        catalogue.word(name(i), name(i));
    for (int i = 0; i < steps; ++i) {
        catalogue.link(name(i + 1), linkType, name(i));
        catalogue.link(name(i + 1), linkType, name(i));
    }
}

} // namespace

class TestGraphWalks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithPlainWalks_data();
    void agreesWithPlainWalks();
    void laddersAgreeWithPlainWalks_data();
    void laddersAgreeWithPlainWalks();
    void walksLaddersOfManyPaths_data();
    void walksLaddersOfManyPaths();
    void walksLongChains();
    void endsOnCycles();
    void endsOnSelfLinks();
    void cutsSortKeysThatGrowTooLong();

private:
    ScopedDataLocation m_data;
};

void TestGraphWalks::agreesWithPlainWalks_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 20; ++seed)
        QTest::addRow("seed %u", seed) << seed;
}

void TestGraphWalks::agreesWithPlainWalks()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    MemoryCatalogue catalogue;
    for (int graph = 0; graph < 300; ++graph)
        addRandomGraph(catalogue, QString("g%1.").arg(graph), random);
    const auto index = buildIndex(catalogue);

    for (PackageNode *node : PackageIndex::selectPackages(index, {}, {}, {}).packages()) {
        QCOMPARE(sortedIds(node->keywords()), sortedIds(plain::keywords(*node)));
        QCOMPARE(node->sortKey(), plain::sortKey(*node));
    }
    int used = 0;
    for (const KeywordNode *node : PackageIndex::selectKeywords(index, {})) {
        for (const QString &type : queriedTypes) {
            const bool expected = plain::isUsedByType(*node, &type);
            QCOMPARE(node->isUsedByType(&type), expected);
            used += expected;
        }
    }
    QVERIFY(used > 100);
}

void TestGraphWalks::laddersAgreeWithPlainWalks_data()
{
    QTest::addColumn<int>("ladderType");
    QTest::addColumn<int>("failingType");
    QTest::addColumn<int>("entryType");
    QTest::addColumn<int>("goodType");
    for (const int ladder : {IsA, Contains, RelatesTo, Is}) {
        for (const int failing : {Requires, RelatesTo, Is}) {
            for (const int entry : {RelatesTo, Contains, IsA}) {
                for (const int good : {IsA, Contains, Is, RelatesTo}) {
                    QTest::addRow("%d %d %d %d", ladder, failing, entry, good)
                        << ladder << failing << entry << good;
                }
            }
        }
    }
}

/// A ladder full of failing paths, then a direct link beside it that may pass or not, depending on
/// what the ladder has left behind.
void TestGraphWalks::laddersAgreeWithPlainWalks()
{
    QFETCH(int, ladderType);
    QFETCH(int, failingType);
    QFETCH(int, entryType);
    QFETCH(int, goodType);
    QVector<bool> answers;
    for (const int steps : {8, 9, diamonds}) {
        MemoryCatalogue catalogue;
        addLadder(catalogue, steps, ladderType);
        catalogue.word("asked", "asked").word("middle", "middle").package("p", "a");
        catalogue.link("p", failingType, "bottom").link("middle", entryType, "asked");
        catalogue.link("top", Contains, "middle").link("p", goodType, "middle");
        const auto index = buildIndex(catalogue);
        answers.append(isUsed(index, "asked", "a"));
        if (steps < diamonds) {
            const QString type = "a";
            QCOMPARE(answers.last(), plain::isUsedByType(*keywordOf(index, "asked"), &type));
        }
    }
    // From a few steps on the number of paths no longer changes the answer.
    QCOMPARE(answers.at(2), answers.at(1));
}

void TestGraphWalks::walksLaddersOfManyPaths_data()
{
    Columns<int>("steps")
        .row("2^40 paths", diamonds)
        .row("more paths than any number counts", chainLength / 2);
}

void TestGraphWalks::walksLaddersOfManyPaths()
{
    QFETCH(int, steps);
    MemoryCatalogue catalogue;
    addLadder(catalogue, steps, IsA);
    catalogue.package("p", "a").package("q", "b").linked("p is_a bottom, q uses bottom");
    const auto index = buildIndex(catalogue);

    QCOMPARE(packageOf(index, "p")->keywords().size(), steps + 1);
    QVERIFY(isUsed(index, "top", "a"));
    QVERIFY(!isUsed(index, "top", "b"));
}

void TestGraphWalks::walksLongChains()
{
    MemoryCatalogue catalogue;
    for (int i = 0; i < chainLength; ++i) {
        catalogue.word(QString("k%1").arg(i), "k");
        if (i > 0)
            catalogue.link(QString("k%1").arg(i), IsA, QString("k%1").arg(i - 1));
    }
    catalogue.package("p", "a").package("q", "b");
    catalogue.linked(QString("p is_a k%1, q requires k%1").arg(chainLength - 1));
    const auto index = buildIndex(catalogue);

    QCOMPARE(packageOf(index, "p")->keywords().size(), chainLength);
    QCOMPARE(packageOf(index, "q")->keywords().size(), 1);
    QVERIFY(isUsed(index, "k0", "a"));
    QVERIFY(!isUsed(index, "k0", "b"));
    QCOMPARE(packageOf(index, "p")->sortKey().count('>'), 4095);
}

void TestGraphWalks::endsOnCycles()
{
    MemoryCatalogue catalogue;
    catalogue.word("a", "A").word("b", "B").word("c", "C").word("d", "D").word("below", "0");
    catalogue.package("p", "t").package("q", "u").linked("below is_a d, below is_a c");
    catalogue.linked("p is_a a, a is_a b, b is_a c, c is_a a, c uses d, q uses c");
    LogRecorder log("norvak.package.index");
    const auto index = buildIndex(catalogue);
    QCOMPARE(log.lines("warning"), QStringList("Keyword \"c\" leads back to itself by is_a links"));

    QCOMPARE(sortedIds(packageOf(index, "p")->keywords()), QStringList({"a", "b", "c", "d"}));
    QCOMPARE(packageOf(index, "p")->sortKey(), QString("C>B>A#p"));
    for (const QString id : {"a", "b", "c"}) {
        QVERIFY(isUsed(index, id, "t"));
        QVERIFY(!isUsed(index, id, "u"));
    }
    QVERIFY(!isUsed(index, "d", "t"));
}

void TestGraphWalks::endsOnSelfLinks()
{
    MemoryCatalogue catalogue;
    catalogue.word("k", "K").package("p", "t");
    catalogue.linked("k is_a k, k relates_to k, k contains k, p is_a k, p is_a p, p requires p");
    const auto index = buildIndex(catalogue);

    QCOMPARE(sortedIds(packageOf(index, "p")->keywords()), QStringList("k"));
    QCOMPARE(packageOf(index, "p")->sortKey(), QString("K#p"));
    QVERIFY(isUsed(index, "k", "t"));
    QVERIFY(!isUsed(index, "k", "u"));
}

void TestGraphWalks::cutsSortKeysThatGrowTooLong()
{
    MemoryCatalogue catalogue;
    addLadder(catalogue, diamonds, IsA);
    catalogue.package("p", "t").package("q", "t").linked("p is_a bottom, q is_a bottom");
    LogRecorder log("norvak.package.index");
    const auto index = buildIndex(catalogue);

    const QStringList terms = packageOf(index, "p")->sortKey().section('#', 0, 0).split('>');
    QCOMPARE(terms.size(), 4096);
    QCOMPARE(terms.last(), QString("bottom"));
    QCOMPARE(terms.count("l39"), 2);
    QCOMPARE(terms.count("l38"), 4);
    QCOMPARE(log.lines("warning").size(), 1);
}

QTEST_GUILESS_MAIN(TestGraphWalks)

#include "tst_graphwalks.moc"

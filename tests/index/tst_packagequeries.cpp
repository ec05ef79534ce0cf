// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

class TestPackageQueries : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void selectsByTypeAndMatcher();
    void noHitIsValidUnknownTypeIsNot();
    void sortsStablyAndOnlyIfNeeded();
    void selectsKeywords();
    void looksNodesUpByKind();
    void listsAnswerOutsideTheirRange();
    void listKeepsItsIndexAlive();

private:
    ScopedDataLocation m_data;
    QSharedPointer<PackageIndex> m_index;
};

void TestPackageQueries::init()
{
    MemoryCatalogue catalogue;
    catalogue.package("1", "a").package("2", "a:b").package("3", "a:b").package("4", "c");
    catalogue.word("x", "pear").word("y", "apple").word("z", "plum");
    m_index = buildIndex(catalogue);
}

void TestPackageQueries::selectsByTypeAndMatcher()
{
    const auto isOdd = [](PackageNode *node) { return node->id().toInt() % 2 == 1; };
    QCOMPARE(ids(PackageIndex::selectPackages(m_index, {}, {}, {})), QString("1 2 3 4"));
    QCOMPARE(ids(PackageIndex::selectPackages(m_index, {}, isOdd, {})), QString("1 3"));
    QCOMPARE(ids(PackageIndex::selectPackages(m_index, "a:b", isOdd, {})), QString("3"));
}

void TestPackageQueries::noHitIsValidUnknownTypeIsNot()
{
    const auto never = [](PackageNode *) { return false; };
    const PackageList none = PackageIndex::selectPackages(m_index, "a", never, {});
    QVERIFY(none.isValid());
    QCOMPARE(none.size(), 0);
    const PackageList unknown = PackageIndex::selectPackages(m_index, "d", {}, {});
    QVERIFY(!unknown.isValid());
    QCOMPARE(unknown.size(), 0);

    QVERIFY(!PackageIndex::selectPackages({}, {}, {}, {}).isValid());
    QVERIFY(!PackageIndex::selectKeywords({}, {}).isValid());
    const auto empty = buildIndex(MemoryCatalogue());
    QVERIFY(PackageIndex::selectPackages(empty, {}, {}, {}).isValid());
    QCOMPARE(PackageIndex::selectPackages(empty, {}, {}, {}).size(), 0);
}

void TestPackageQueries::sortsStablyAndOnlyIfNeeded()
{
    const auto evenFirst = [](PackageNode *a, PackageNode *b) {
        return a->id().toInt() % 2 < b->id().toInt() % 2;
    };
    QCOMPARE(ids(PackageIndex::selectPackages(m_index, {}, {}, evenFirst)), QString("2 4 1 3"));

    int calls = 0;
    const auto sorter = [&calls](PackageNode *, PackageNode *) { return ++calls > 0; };
    QCOMPARE(ids(PackageIndex::selectPackages(m_index, "c", {}, sorter)), QString("4"));
    QCOMPARE(calls, 0);
}

void TestPackageQueries::selectsKeywords()
{
    QCOMPARE(ids(PackageIndex::selectKeywords(m_index, {})), QString("y x z"));
    const KeywordList hits = PackageIndex::selectKeywords(m_index, [](KeywordNode *node) {
        const QString search = "p";
        return node->displayString().startsWith(search);
    });
    QCOMPARE(ids(hits), QString("x z"));
    QCOMPARE(hits.displayString(1), QString("plum"));
    QCOMPARE(hits.id(0), QString("x"));
}

void TestPackageQueries::looksNodesUpByKind()
{
    QCOMPARE(packageOf(m_index, "2")->type().toString(), QString("a:b"));
    QCOMPARE(keywordOf(m_index, "x")->displayString().toString(), QString("pear"));
    QVERIFY(!packageOf(m_index, "x"));
    QVERIFY(!keywordOf(m_index, "2"));
    QVERIFY(!packageOf(m_index, "nobody"));
    QVERIFY(!m_index->getPackage(QStringRef()));
}

void TestPackageQueries::listsAnswerOutsideTheirRange()
{
    const PackageList packages(m_index, {nullptr});
    const KeywordList keywords(m_index, {nullptr});
    for (const int i : {-1, 0, 1, INT_MAX, INT_MIN}) {
        QCOMPARE(packages.id(i), QString());
        QCOMPARE(keywords.id(i), QString());
        QCOMPARE(keywords.displayString(i), QString());
        QCOMPARE(PackageList().id(i), QString());
    }
}

void TestPackageQueries::listKeepsItsIndexAlive()
{
    const QWeakPointer<PackageIndex> watched = m_index;
    PackageList list = PackageIndex::selectPackages(m_index, "a:b", {}, {});
    m_index.reset();
    QVERIFY(!watched.isNull());
    list.list().removeFirst();
    QCOMPARE(ids(list), QString("3"));
    PackageList moved = std::move(list);
    QVERIFY(!watched.isNull());
    moved = PackageList();
    QVERIFY(watched.isNull());
}

QTEST_GUILESS_MAIN(TestPackageQueries)

#include "tst_packagequeries.moc"

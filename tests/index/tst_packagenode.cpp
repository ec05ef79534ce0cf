// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindexnode.h"

#include "index/packageindex.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

using Links = QVector<LinkInfo>;
Q_DECLARE_METATYPE(Links)

namespace {

PackageNode *package(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getPackage(&id);
}

/// Package "p" and keywords "A" to "D", joined by \a links.
QSharedPointer<PackageIndex> indexWith(const Links &links)
{
    MemoryCatalogue catalogue;
    catalogue.package("p", "t");
    for (const QString id : {"A", "B", "C", "D"})
        catalogue.word(id, id);
    catalogue.links = links;
    return buildIndex(catalogue);
}

} // namespace

class TestPackageNode : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isOfType_data();
    void isOfType();
    void keywords_data();
    void keywords();
    void isUsedByType_data();
    void isUsedByType();
    void sortKey_data();
    void sortKey();
    void readsManifestOnce();
    void emptyManifestStaysEmpty();
    void hasItsOwnDirectory();
    void installedFileWins();

private:
    ScopedDataLocation m_data;
};

void TestPackageNode::isOfType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<bool>("expected");
    QTest::newRow("same") << "a:b"
                          << "a:b" << true;
    QTest::newRow("sub-type") << "a:b"
                              << "a" << true;
    QTest::newRow("super-type") << "a"
                                << "a:b" << false;
    QTest::newRow("deeper than the package") << "a:b"
                                             << "a:b:c" << false;
    QTest::newRow("longer last level") << "a:bc"
                                       << "a:b" << false;
    QTest::newRow("other case") << "a:b"
                                << "A" << false;
    QTest::newRow("both empty") << ""
                                << "" << true;
    QTest::newRow("empty asked of a type") << "a"
                                           << "" << false;
    QTest::newRow("empty first level") << ":b"
                                       << "" << true;
    QTest::newRow("type asked of an empty one") << ""
                                                << "a" << false;
    QTest::newRow("empty level in the middle") << "a::b"
                                               << "a:" << true;
    QTest::newRow("empty last level asked") << "a:b"
                                            << "a:" << false;
}

void TestPackageNode::isOfType()
{
    QFETCH(QString, type);
    QFETCH(QString, asked);
    const auto index = buildIndex(MemoryCatalogue().package("p", type));
    QTEST(package(index, "p")->isOfType(&asked), "expected");
    // The comparison of all levels, one by one.
    const QStringList levels = type.split(':');
    const QStringList askedLevels = asked.split(':');
    QTEST(levels.mid(0, askedLevels.size()) == askedLevels, "expected");
}

void TestPackageNode::keywords_data()
{
    QTest::addColumn<Links>("links");
    QTest::addColumn<QString>("expected");
    QTest::newRow("negated only") << Links{{IsNotA, "p", "A"}} << "";
    QTest::newRow("negation wins") << Links{{IsA, "p", "A"}, {IsNotA, "p", "A"}} << "";
    QTest::newRow("negated keyword was passed through")
        << Links{{IsA, "p", "A"}, {IsNotA, "p", "A"}, {IsA, "A", "B"}} << "B";
    QTest::newRow("negation further on doesn't count")
        << Links{{IsA, "p", "A"}, {IsA, "A", "B"}, {IsNotA, "A", "B"}} << "AB";
    QTest::newRow("is_a inherits through any link, once")
        << Links{{IsA, "p", "A"}, {IsA, "A", "B"}, {Uses, "B", "C"}, {IsA, "C", "D"}} << "ABC";
    QTest::newRow("contains passes on what is contained and related")
        << Links{{Contains, "p", "A"}, {Contains, "A", "B"}, {RelatesTo, "B", "C"}, {IsA, "A", "D"}}
        << "ABC";
    QTest::newRow("is passes on what is related")
        << Links{{Is, "p", "A"}, {RelatesTo, "A", "B"}, {Contains, "A", "C"}, {Contains, "B", "D"}}
        << "AB";
    QTest::newRow("relates_to passes on what is related") << Links{
        {RelatesTo, "p", "A"},
        {RelatesTo, "A", "B"},
        {RelatesTo, "B", "C"},
        {Is, "C", "D"}} << "ABC";
    QTest::newRow("uses brings its keyword alone")
        << Links{{Uses, "p", "A"}, {RelatesTo, "A", "B"}} << "A";
    QTest::newRow("requires brings its keyword alone")
        << Links{{Requires, "p", "A"}, {IsA, "A", "B"}} << "A";
    QTest::newRow("links are followed forwards only") << Links{{IsA, "A", "p"}} << "";
    QTest::newRow("second way to a keyword passes more on")
        << Links{{Is, "p", "A"}, {Contains, "A", "B"}, {Contains, "p", "A"}} << "AB";
}

void TestPackageNode::keywords()
{
    QFETCH(Links, links);
    const auto index = indexWith(links);
    QStringList found;
    for (const KeywordNode *node : package(index, "p")->keywords())
        found.append(node->id().toString());
    found.sort();
    QTEST(found.join(QString()), "expected");
}

void TestPackageNode::isUsedByType_data()
{
    QTest::addColumn<Links>("links");
    QTest::addColumn<bool>("expected");
    QTest::newRow("direct") << Links{{IsA, "p", "A"}} << true;
    QTest::newRow("direct, uses") << Links{{Uses, "p", "A"}} << false;
    QTest::newRow("direct, is_not_a") << Links{{IsNotA, "p", "A"}} << false;
    QTest::newRow("is_a keeps the set") << Links{{IsA, "p", "B"}, {Uses, "B", "A"}} << false;
    QTest::newRow("is_a, then is_a") << Links{{IsA, "p", "B"}, {IsA, "B", "A"}} << true;
    QTest::newRow("is, then contains") << Links{{Is, "p", "B"}, {Contains, "B", "A"}} << true;
    QTest::newRow("is, then relates_to") << Links{{Is, "p", "B"}, {RelatesTo, "B", "A"}} << false;
    QTest::newRow("contains, then relates_to")
        << Links{{Contains, "p", "B"}, {RelatesTo, "B", "A"}} << true;
    QTest::newRow("relates_to, then contains")
        << Links{{RelatesTo, "p", "B"}, {Contains, "B", "A"}} << false;
    // The failed search over "uses" leaves its is_a on the path, and is_a may not stand before is.
    QTest::newRow("what a failed search left spoils the next")
        << Links{{IsA, "B", "A"}, {Uses, "p", "B"}, {IsA, "p", "B"}} << false;
    QTest::newRow("the other order")
        << Links{{IsA, "B", "A"}, {IsA, "p", "B"}, {Uses, "p", "B"}} << true;
    // Over C a Contains is left behind, with which relates_to and is fit together.
    QTest::newRow("what a failed search left mends the next")
        << Links{{RelatesTo, "B", "A"}, {Contains, "C", "B"}, {Uses, "p", "C"}, {Is, "p", "B"}}
        << true;
    QTest::newRow("without it") << Links{{RelatesTo, "B", "A"}, {Is, "p", "B"}} << false;
}

void TestPackageNode::isUsedByType()
{
    QFETCH(Links, links);
    const auto index = indexWith(links);
    const QString id = "A";
    const QString type = "t";
    QTEST(index->getKeyword(&id)->isUsedByType(&type), "expected");
}

void TestPackageNode::sortKey_data()
{
    QTest::addColumn<Links>("links");
    QTest::addColumn<QString>("expected");
    QTest::newRow("nothing") << Links{} << "#p";
    QTest::newRow("chain and trait")
        << Links{{IsA, "p", "B"}, {IsA, "B", "A"}, {Contains, "p", "C"}} << "A>B:C#p";
    QTest::newRow("traits alone, contains before is")
        << Links{{Is, "p", "A"}, {Contains, "p", "D"}, {Contains, "p", "C"}} << "C&D&A#p";
    QTest::newRow("breadth first")
        << Links{{IsA, "p", "A"}, {IsA, "p", "B"}, {IsA, "A", "C"}} << "C>B>A#p";
    QTest::newRow("reached twice, there twice") << Links{
        {IsA, "p", "A"},
        {IsA, "p", "B"},
        {IsA, "A", "C"},
        {IsA, "B", "C"},
        {IsA, "C", "D"}} << "D>D>C>C>B>A#p";
    QTest::newRow("doubled link") << Links{{IsA, "p", "A"}, {IsA, "p", "A"}} << "A>A#p";
    QTest::newRow("other links") << Links{{Uses, "p", "A"}, {RelatesTo, "p", "B"}, {IsA, "p", "p"}}
                                 << "#p";
}

void TestPackageNode::sortKey()
{
    QFETCH(Links, links);
    QTEST(package(indexWith(links), "p")->sortKey(), "expected");
}

void TestPackageNode::readsManifestOnce()
{
    MemorySource source;
    source.catalogue.package("p", "t", {{"name", "P"}, {"n", 1}});
    const auto index = buildIndex({&source});
    const PackageNode *p = package(index, "p");
    QCOMPARE(int(source.log().manifestReads), 0);
    QCOMPARE(p->manifestValue("name"), QJsonValue("P"));
    QVERIFY(p->manifestValue("missing").isUndefined());
    QCOMPARE(p->manifest().size(), 2);
    QCOMPARE(int(source.log().manifestReads), 1);
}

void TestPackageNode::emptyManifestStaysEmpty()
{
    MemorySource source;
    source.catalogue.package("p");
    const auto index = buildIndex({&source});
    QVERIFY(package(index, "p")->manifest().isEmpty());
    QVERIFY(package(index, "p")->manifest().isEmpty());
    QCOMPARE(int(source.log().manifestReads), 1);
}

void TestPackageNode::hasItsOwnDirectory()
{
    MemoryCatalogue catalogue;
    catalogue.package("p", "a:b").package("%2", "%1").package("bare");
    const auto index = buildIndex(catalogue);
    const QDir root = index->installLocation().directory(false);
    const auto pathOf = [&](const QString &id) {
        const QDir directory = package(index, id)->installLocation().directory(false);
        return root.relativeFilePath(QDir::cleanPath(directory.absolutePath()));
    };
    QCOMPARE(pathOf("p"), QString("a/b/p"));
    QCOMPARE(pathOf("%2"), QString("%1/%2"));
    QCOMPARE(pathOf("bare"), QString("bare"));
}

void TestPackageNode::installedFileWins()
{
    const auto index = buildIndex(MemoryCatalogue().package("p", "a:b"));
    const PackageNode *p = package(index, "p");
    QCOMPARE(p->fileUrl("f.txt"), QUrl("memory:/p/f.txt"));

    QTemporaryFile file;
    QVERIFY(file.open());
    QVERIFY(p->installLocation().installFile(file.fileName(), "f.txt"));
    const QString installed = index->installLocation().directory(false).filePath("a/b/p/f.txt");
    QCOMPARE(QDir::cleanPath(p->fileUrl("f.txt").toLocalFile()), QDir::cleanPath(installed));
    QCOMPARE(p->fileUrl("other.txt"), QUrl("memory:/p/other.txt"));
}

QTEST_GUILESS_MAIN(TestPackageNode)

#include "tst_packagenode.moc"

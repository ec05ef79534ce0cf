// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindexnode.h"

#include "index/packageindex.h"
#include "install/packageinstaller.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// Package "p" and keywords "A" to "D", joined by \a links: "p is_a A, A uses B".
QSharedPointer<PackageIndex> indexWith(const QString &links)
{
    MemoryCatalogue catalogue;
    catalogue.package("p", "t");
    for (const QString id : {"A", "B", "C", "D"})
        catalogue.word(id, id);
    return buildIndex(catalogue.linked(links));
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
    void hasItsOwnDirectory_data();
    void hasItsOwnDirectory();

private:
    ScopedDataLocation m_data;
};

void TestPackageNode::isOfType_data()
{
    Columns<QString, QString, bool>("type", "asked", "expected")
        .row("same", "a:b", "a:b", true)
        .row("sub-type", "a:b", "a", true)
        .row("super-type", "a", "a:b", false)
        .row("longer last level", "a:bc", "a:b", false)
        .row("other case", "a:b", "A", false)
        .row("both empty", "", "", true)
        .row("empty asked of a type", "a", "", false)
        .row("empty first level", ":b", "", true)
        .row("empty level in the middle", "a::b", "a:", true)
        .row("empty last level asked", "a:b", "a:", false);
}

void TestPackageNode::isOfType()
{
    QFETCH(QString, type);
    QFETCH(QString, asked);
    const auto index = buildIndex(MemoryCatalogue().package("p", type));
    QTEST(packageOf(index, "p")->isOfType(&asked), "expected");
}

void TestPackageNode::keywords_data()
{
    Columns<QString, QString>("links", "expected")
        .row("negated only", "p is_not_a A", "")
        .row("negation wins", "p is_a A, p is_not_a A", "")
        .row("negated keyword was passed through", "p is_a A, p is_not_a A, A is_a B", "B")
        .row("negation further on doesn't count", "p is_a A, A is_a B, A is_not_a B", "AB")
        .row(
            "is_a inherits through any link, once", "p is_a A, A is_a B, B uses C, C is_a D", "ABC")
        .row(
            "contains passes on what is contained and related",
            "p contains A, A contains B, B relates_to C, A is_a D", "ABC")
        .row(
            "is passes on what is related", "p is A, A relates_to B, A contains C, B contains D",
            "AB")
        .row(
            "relates_to passes on what is related",
            "p relates_to A, A relates_to B, B relates_to C, C is D", "ABC")
        .row("uses brings its keyword alone", "p uses A, A relates_to B", "A")
        .row("requires brings its keyword alone", "p requires A, A is_a B", "A")
        .row("links are followed forwards only", "A is_a p", "")
        .row("second way to a keyword passes more on", "p is A, A contains B, p contains A", "AB");
}

void TestPackageNode::keywords()
{
    QFETCH(QString, links);
    const auto index = indexWith(links);
    QStringList found;
    for (const KeywordNode *node : packageOf(index, "p")->keywords())
        found.append(node->id().toString());
    found.sort();
    QTEST(found.join(QString()), "expected");
}

void TestPackageNode::isUsedByType_data()
{
    Columns<QString, bool>("links", "expected")
        .row("direct", "p is_a A", true)
        .row("direct, uses", "p uses A", false)
        .row("direct, is_not_a", "p is_not_a A", false)
        .row("is_a keeps the set", "p is_a B, B uses A", false)
        .row("is_a, then is_a", "p is_a B, B is_a A", true)
        .row("is, then contains", "p is B, B contains A", true)
        .row("is, then relates_to", "p is B, B relates_to A", false)
        .row("contains, then relates_to", "p contains B, B relates_to A", true)
        .row("relates_to, then contains", "p relates_to B, B contains A", false)
        // The failed search over "uses" leaves its is_a behind, which may not stand before is.
        .row("what a failed search left spoils the next", "B is_a A, p uses B, p is_a B", false)
        .row("the other order", "B is_a A, p is_a B, p uses B", true)
        // Over C a contains is left behind, with which relates_to and is fit together.
        .row(
            "what a failed search left mends the next",
            "B relates_to A, C contains B, p uses C, p is B", true)
        .row("without it", "B relates_to A, p is B", false);
}

void TestPackageNode::isUsedByType()
{
    QFETCH(QString, links);
    const auto index = indexWith(links);
    const QString type = "t";
    QTEST(keywordOf(index, "A")->isUsedByType(&type), "expected");
}

void TestPackageNode::sortKey_data()
{
    Columns<QString, QString>("links", "expected")
        .row("nothing", "", "#p")
        .row("chain and trait", "p is_a B, B is_a A, p contains C", "A>B:C#p")
        .row("traits alone, contains before is", "p is A, p contains D, p contains C", "C&D&A#p")
        .row("breadth first", "p is_a A, p is_a B, A is_a C", "C>B>A#p")
        .row(
            "reached twice, there twice", "p is_a A, p is_a B, A is_a C, B is_a C, C is_a D",
            "D>D>C>C>B>A#p")
        .row("doubled link", "p is_a A, p is_a A", "A>A#p")
        .row("other links", "p uses A, p relates_to B, p is_a p", "#p");
}

void TestPackageNode::sortKey()
{
    QFETCH(QString, links);
    QTEST(packageOf(indexWith(links), "p")->sortKey(), "expected");
}

void TestPackageNode::readsManifestOnce()
{
    MemorySource source;
    source.catalogue.package("p", "t", {{"name", "P"}, {"n", 1}}).package("empty");
    const auto index = buildIndex({&source});
    QCOMPARE(int(source.log().manifestReads), 0);
    for (int round = 0; round < 2; ++round) {
        QCOMPARE(packageOf(index, "p")->manifestValue("name"), QJsonValue("P"));
        QVERIFY(packageOf(index, "p")->manifestValue("missing").isUndefined());
        QVERIFY(packageOf(index, "empty")->manifest().isEmpty());
        QCOMPARE(int(source.log().manifestReads), 2);
    }
}

void TestPackageNode::hasItsOwnDirectory_data()
{
    Columns<QString, QString, QString>("type", "id", "path")
        .row("levels are directories", "a:b", "p", "a/b/p")
        .row("no placeholders", "%1", "%2", "%1/%2")
        .row("without a type", "", "bare", "bare")
        .row("only full stops", "...", "....", ".../....")
        .row("identifier leads up", "translation", "../furniture/victim", "")
        .row("identifier has levels", "", "furniture/chair", "")
        .row("identifier goes round", "a", "x/../p", "")
        .row("identifier is the directory", "a", ".", "")
        .row("identifier is the parent", "a", "..", "")
        .row("no identifier", "a", "", "")
        .row("NUL", "a", QString("p") + QChar(0), "")
        .row("half a character", "a", QString("p") + QChar(0xd800), "")
        .row("level leads up", "a:..", "p", "")
        .row("level with a separator", "a/b", "p", "")
        .row("empty level", "a::b", "p", "")
        .row("empty last level", "a:", "p", "");
}

void TestPackageNode::hasItsOwnDirectory()
{
    QFETCH(QString, type);
    QFETCH(QString, id);
    QFETCH(QString, path);
    const auto index = buildIndex(MemoryCatalogue().package(id, type));
    const PackageNode *node = packageOf(index, id);
    const QString root = index->installLocation().directory(false).absolutePath() + '/';
    const InstallLocation location = node->installLocation();
    QCOMPARE(location.isValid(), !path.isEmpty());
    if (location.isValid())
        QCOMPARE(location.directory(true).path(), root + path);
    const QString name = location.isValid() ? "f" : "victim";
    writeFile(root + path + '/' + name, "content");
    QCOMPARE(node->fileUrl(name).isLocalFile(), location.isValid());
    writeFile(root + path + "/leg/f", "another package's");
    QVERIFY(!node->fileUrl("leg").isLocalFile() && !node->fileUrl("leg/f").isLocalFile());

    LogRecorder log("norvak.package.index");
    const auto installer = node->createInstaller(InstallLocation());
    QCOMPARE(installer->errors().size(), location.isValid() ? 0 : 1);
    QCOMPARE(installer->isFinished(), !location.isValid());
    QCOMPARE(log.lines("warning").size(), location.isValid() ? 0 : 1);
}

QTEST_GUILESS_MAIN(TestPackageNode)

#include "tst_packagenode.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"

#include "index/packageindexnode.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

PackageNode *package(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getPackage(&id);
}

KeywordNode *keyword(const QSharedPointer<PackageIndex> &index, const QString &id)
{
    return index->getKeyword(&id);
}

QStringList packageIds(const QSharedPointer<PackageIndex> &index, const QString &type = {})
{
    QStringList ids;
    for (const PackageNode *node : PackageIndex::selectPackages(index, type, {}, {}))
        ids.append(node->id().toString());
    return ids;
}

QStringList keywordIds(const QSharedPointer<PackageIndex> &index)
{
    QStringList ids;
    for (const KeywordNode *node : PackageIndex::selectKeywords(index, {}))
        ids.append(node->id().toString());
    return ids;
}

/// Links in the form "type:id".
QStringList ends(const QVector<NodeLink> &links)
{
    QStringList ends;
    for (const NodeLink &link : links)
        ends.append(QString("%1:%2").arg(link.type).arg(link.node->id()));
    return ends;
}

/// An accessor that notes the order of the calls, under its name.
class CallingAccessor : public MemoryAccessor
{
public:
    CallingAccessor(const QString &name, const MemoryCatalogue &catalogue, QStringList *calls)
        : MemoryAccessor(catalogue, QSharedPointer<MemoryLog>::create())
        , m_name(name)
        , m_calls(calls)
    {}
    void load() override { m_calls->append(m_name + " load"); }
    QStringList languages() const override
    {
        m_calls->append(m_name + " languages");
        return {};
    }
    PackageInfo packageInfo(int index) const override
    {
        m_calls->append(m_name + " package");
        return MemoryAccessor::packageInfo(index);
    }
    KeywordInfo keywordInfo(int index) const override
    {
        m_calls->append(m_name + " keyword");
        return MemoryAccessor::keywordInfo(index);
    }
    LinkInfo linkInfo(int index) const override
    {
        m_calls->append(m_name + " link");
        return MemoryAccessor::linkInfo(index);
    }

private:
    const QString m_name;
    QStringList *const m_calls;
};

class CallingSource : public MemorySource
{
public:
    CallingSource(const QString &name, QStringList *calls)
        : m_name(name)
        , m_calls(calls)
    {}
    std::unique_ptr<PackageAccessor> getAccessor() override
    {
        return std::make_unique<CallingAccessor>(m_name, catalogue, m_calls);
    }

private:
    const QString m_name;
    QStringList *const m_calls;
};

} // namespace

class TestPackageIndex : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isUsableWithoutSources();
    void readsSourcesInOrder();
    void laterSourceReplacesWhole();
    void replacementMayBeOfOtherKind();
    void keywordReplacesPackageOfSameSource();
    void passesOverBadRecords();
    void keepsLinksInOrderAndDoubled();
    void reportsLinksAndDuration();
    void choosesActiveLanguage_data();
    void choosesActiveLanguage();
    void ordersPackagesByTypeThenSortKey();
    void ordersKeywordsByDisplayString();
    void typeRangesCoverSubTypes();
    void typeOfManyLevelsHasBoundedRanges();
    void stringPoolClosesWithTheBuild();
    void survivesItsSources();

private:
    ScopedDataLocation m_data;
};

void TestPackageIndex::isUsableWithoutSources()
{
    const auto index = buildIndex(QList<PackageSource *>());
    QCOMPARE(packageIds(index), QStringList());
    QCOMPARE(keywordIds(index), QStringList());
    QVERIFY(!package(index, "p"));
    QVERIFY(!keyword(index, ""));
    QCOMPARE(index->activeLanguage().toString(), QString("en"));
    QVERIFY(index->installLocation().isValid());
    QVERIFY(!PackageIndex::selectPackages(index, "a", {}, {}).isValid());
}

void TestPackageIndex::readsSourcesInOrder()
{
    QStringList calls;
    CallingSource first("first", &calls);
    CallingSource second("second", &calls);
    for (CallingSource *source : {&first, &second})
        source->catalogue.package("p").word("k", "k").link("p", IsA, "k");
    buildIndex({&first, &second});
    QCOMPARE(
        calls,
        QStringList(
            {"first languages", "second languages", "first load", "first package", "first keyword",
             "second load", "second package", "second keyword", "first link", "second link"}));
}

void TestPackageIndex::laterSourceReplacesWhole()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("p", "old", {{"a", 1}, {"b", 2}}, "9").word("k", "old");
    low.catalogue.link("p", IsA, "k").package("q", "old", {{"a", 3}});
    high.catalogue.package("p", "new", {{"a", 4}}, "1").word("k", "new").link("k", IsA, "p");
    const auto index = buildIndex({&low, &high});

    const PackageNode *p = package(index, "p");
    QCOMPARE(p->type().toString(), QString("new"));
    QCOMPARE(p->revision().toString(), QString("1"));
    QCOMPARE(p->manifest(), QJsonObject({{"a", 4}}));
    QCOMPARE(package(index, "q")->manifest(), QJsonObject({{"a", 3}}));
    // Links of either source join the winners.
    QCOMPARE(ends(p->outLinks()), QStringList("0:k"));
    QCOMPARE(p->outLinks().first().node, keyword(index, "k"));
    QCOMPARE(keyword(index, "k")->displayString().toString(), QString("new"));
    QCOMPARE(ends(p->inLinks()), QStringList("0:k"));
    QCOMPARE(packageIds(index), QStringList({"p", "q"}));
    QCOMPARE(packageIds(index, "old"), QStringList("q"));
}

void TestPackageIndex::replacementMayBeOfOtherKind()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("x").word("y", "y").link("x", IsA, "y");
    high.catalogue.word("x", "x").package("y");
    const auto index = buildIndex({&low, &high});
    QVERIFY(!package(index, "x"));
    QVERIFY(!keyword(index, "y"));
    QCOMPARE(ends(keyword(index, "x")->outLinks()), QStringList("0:y"));
    QCOMPARE(packageIds(index), QStringList("y"));
    QCOMPARE(keywordIds(index), QStringList("x"));
}

void TestPackageIndex::keywordReplacesPackageOfSameSource()
{
    const auto index = buildIndex(MemoryCatalogue().word("x", "text").package("x"));
    QVERIFY(!package(index, "x"));
    QVERIFY(keyword(index, "x"));
}

void TestPackageIndex::passesOverBadRecords()
{
    MemoryCatalogue catalogue;
    catalogue.word("ok", "text", KeywordType(-1)).keyword("empty", KeywordType::Noun, {});
    catalogue.word("seven", "text", KeywordType(7)).word("k", "text").package("p");
    catalogue.link("p", -1, "k").link("", IsA, "k").link("p", IsA, "").link("p", IsA, "ok");
    catalogue.link("p", 42, "k");
    LogRecorder log("norvak.package.index");
    const auto index = buildIndex(catalogue);
    QCOMPARE(keywordIds(index), QStringList("k"));
    QCOMPARE(ends(package(index, "p")->outLinks()), QStringList("42:k"));
    QCOMPARE(log.lines("warning"), QStringList());
}

void TestPackageIndex::keepsLinksInOrderAndDoubled()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("p").word("a", "a").word("b", "b");
    low.catalogue.link("p", Uses, "b").link("p", IsA, "a").link("a", IsA, "a");
    high.catalogue.link("p", IsA, "a").link("b", Is, "a");
    const auto index = buildIndex({&low, &high});
    QCOMPARE(ends(package(index, "p")->outLinks()), QStringList({"5:b", "0:a", "0:a"}));
    QCOMPARE(ends(keyword(index, "a")->inLinks()), QStringList({"0:p", "0:a", "0:p", "4:b"}));
    QCOMPARE(ends(keyword(index, "a")->outLinks()), QStringList("0:a"));
}

void TestPackageIndex::reportsLinksAndDuration()
{
    MemoryCatalogue catalogue;
    catalogue.package("p").word("k", "k").link("p", Is, "k").link("p", IsA, "nobody");
    LogRecorder log("norvak.package.index");
    buildIndex(catalogue);
    QCOMPARE(log.lines().size(), 3);
    QCOMPARE(
        log.lines().at(0), QString("debug: Creating link between \"p\" and \"k\" with type 4"));
    QCOMPARE(log.lines().at(1), QString("debug: Cannot link between \"p\" and \"nobody\""));
    const QRegularExpression duration("^debug: Package index build took [0-9.e-]+ msecs$");
    QVERIFY2(duration.match(log.lines().at(2)).hasMatch(), qPrintable(log.lines().at(2)));
}

void TestPackageIndex::choosesActiveLanguage_data()
{
    QTest::addColumn<QString>("locale");
    QTest::addColumn<QStringList>("languages");
    QTest::addColumn<QString>("expected");
    QTest::newRow("language of the locale") << "de_AT" << QStringList{"de", "en"} << "de";
    QTest::newRow("whole name first") << "de_AT" << QStringList{"de", "de_AT"} << "de_AT";
    QTest::newRow("nothing fits") << "fr_FR" << QStringList{"de", "en"} << "en";
    QTest::newRow("nothing declared") << "de_DE" << QStringList{} << "en";
    QTest::newRow("other country") << "de_AT" << QStringList{"de_DE"} << "en";
    QTest::newRow("locale without country") << "C" << QStringList{"C"} << "C";
}

void TestPackageIndex::choosesActiveLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, languages);
    QFETCH(QString, expected);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    MemorySource other;
    other.catalogue.languages.clear();
    MemorySource source;
    source.catalogue.languages = languages;
    const auto index = buildIndex({&other, &source});
    QLocale::setDefault(before);
    QCOMPARE(index->activeLanguage().toString(), expected);
}

void TestPackageIndex::ordersPackagesByTypeThenSortKey()
{
    MemoryCatalogue catalogue;
    catalogue.word("chair", "Chair").word("table", "table").word("old", "Old");
    catalogue.package("t1", "b").package("c1", "b").package("z", "B").package("none", "b");
    catalogue.package("c2", "b").package("deep", "a:b").package("sibling", "a-b").package("a", "a");
    catalogue.link("t1", IsA, "table").link("c1", IsA, "chair").link("c2", IsA, "chair");
    catalogue.link("c2", Is, "old");
    const auto index = buildIndex(catalogue);
    // "#none" < "Chair#c1" < "Chair:Old#c2" < "table#t1", the case of the types counting.
    QCOMPARE(
        packageIds(index), QStringList({"z", "a", "sibling", "deep", "none", "c1", "c2", "t1"}));
}

void TestPackageIndex::ordersKeywordsByDisplayString()
{
    MemoryCatalogue catalogue;
    catalogue.word("1", "pear").word("2", "Apple").word("3", "banana");
    catalogue.word("4", "lemon", KeywordType::Literal);
    catalogue.keyword("5", KeywordType::Noun, {{"en", "", "cherries"}});
    catalogue.word("6", "LEMON", KeywordType::Category);
    QCOMPARE(keywordIds(buildIndex(catalogue)), QStringList({"2", "3", "5", "4", "6", "1"}));
}

void TestPackageIndex::typeRangesCoverSubTypes()
{
    MemoryCatalogue catalogue;
    catalogue.package("1", "a:b:c").package("2", "a:b").package("3", "a:d").package("4", "a-b");
    catalogue.package("5", "").package("6", "ab").package("7", "a").package("8", "e:f:g");
    const auto index = buildIndex(catalogue);
    QCOMPARE(packageIds(index, "a:b"), QStringList({"2", "1"}));
    QCOMPARE(packageIds(index, "a:b:c"), QStringList("1"));
    // A sibling that sorts between a type and its sub-types is part of the range.
    QCOMPARE(packageIds(index, "a"), QStringList({"7", "4", "2", "1", "3"}));
    QCOMPARE(packageIds(index, "e"), QStringList("8"));
    QCOMPARE(packageIds(index, "e:f"), QStringList("8"));
    QVERIFY(!PackageIndex::selectPackages(index, "a:", {}, {}).isValid());
    QVERIFY(!PackageIndex::selectPackages(index, "A", {}, {}).isValid());
    QCOMPARE(packageIds(index).size(), 8);
}

void TestPackageIndex::typeOfManyLevelsHasBoundedRanges()
{
    const QString deep = QString(":").repeated(1 << 20);
    const auto index = buildIndex(MemoryCatalogue().package("p", deep).package("q", "::"));
    QCOMPARE(packageIds(index, deep), QStringList("p"));
    QCOMPARE(packageIds(index, ":"), QStringList({"q", "p"}));
    QCOMPARE(packageIds(index, QString(":").repeated(200)), QStringList("p"));
    QVERIFY(!PackageIndex::selectPackages(index, QString(":").repeated(1000), {}, {}).isValid());
}

void TestPackageIndex::stringPoolClosesWithTheBuild()
{
    PackageIndex index;
    const QString text = "text";
    const QStringRef first = index.addString(text);
    const QStringRef second = index.addString(text);
    QCOMPARE(first, second);
    QVERIFY(first.position() != second.position());
    QVERIFY(index.addString(QString()).isNull());
    index.build();
    QVERIFY(index.addString(text).isNull());
    QCOMPARE(first.toString(), text);
}

void TestPackageIndex::survivesItsSources()
{
    PackageList list;
    {
        MemorySource source;
        source.catalogue.package("p", "a", {{"name", "P"}});
        list = PackageIndex::selectPackages(buildIndex({&source}), "a", {}, {});
    }
    QCOMPARE(list[0]->manifestValue("name").toString(), QString("P"));
    QCOMPARE(list[0]->fileUrl("f.png"), QUrl("memory:/p/f.png"));
    QVERIFY(list[0]->installLocation().isValid());
}

QTEST_GUILESS_MAIN(TestPackageIndex)

#include "tst_packageindex.moc"

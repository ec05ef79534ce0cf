// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"

#include "index/packageindexnode.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

QString packageIds(const QSharedPointer<PackageIndex> &index, const QString &type = {})
{
    return ids(PackageIndex::selectPackages(index, type, {}, {}));
}

QString keywordIds(const QSharedPointer<PackageIndex> &index)
{
    return ids(PackageIndex::selectKeywords(index, {}));
}

/// Links in the form "type:id", joined with blanks.
QString ends(const QVector<NodeLink> &links)
{
    QStringList ends;
    for (const NodeLink &link : links)
        ends.append(QString("%1:%2").arg(link.type).arg(link.node->id()));
    return ends.join(' ');
}

/// Notes what is asked of it, under its name.
class CallingAccessor : public MemoryAccessor
{
public:
    CallingAccessor(const QString &name, const MemoryCatalogue &catalogue, QStringList &calls)
        : MemoryAccessor(catalogue)
        , m_name(name)
        , m_calls(calls)
    {}
    void load() override { note("load"); }
    QStringList languages() const override
    {
        note("languages");
        return {};
    }
    PackageInfo packageInfo(int index) const override
    {
        note("package");
        return MemoryAccessor::packageInfo(index);
    }
    KeywordInfo keywordInfo(int index) const override
    {
        note("keyword");
        return MemoryAccessor::keywordInfo(index);
    }
    LinkInfo linkInfo(int index) const override
    {
        note("link");
        return MemoryAccessor::linkInfo(index);
    }

private:
    void note(const QString &call) const { m_calls.append(m_name + ' ' + call); }

    const QString m_name;
    QStringList &m_calls;
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
    void selectionMayBeEmptyOrInvalid();
    void selectsByTypeAndSortsStably();
    void selectsKeywords();
    void listKeepsItsIndexAlive();

private:
    ScopedDataLocation m_data;
};

void TestPackageIndex::isUsableWithoutSources()
{
    const auto index = buildIndex(QList<PackageSource *>());
    QCOMPARE(packageIds(index), QString());
    QCOMPARE(keywordIds(index), QString());
    QVERIFY(!packageOf(index, "p"));
    QVERIFY(!keywordOf(index, ""));
    QVERIFY(index->installLocation().isValid());
}

void TestPackageIndex::readsSourcesInOrder()
{
    MemoryCatalogue catalogue;
    catalogue.package("p").word("k", "k").linked("p is_a k");
    QStringList calls;
    MemorySource sources[2];
    for (int i : {0, 1}) {
        sources[i].accessorMaker = [&calls, &catalogue, i] {
            return std::make_unique<CallingAccessor>(QString::number(i), catalogue, calls);
        };
    }
    buildIndex({&sources[0], &sources[1]});
    const QString expected = "0 languages, 1 languages, 0 load, 0 package, 0 keyword, "
                             "1 load, 1 package, 1 keyword, 0 link, 1 link";
    QCOMPARE(calls.join(", "), expected);
}

void TestPackageIndex::laterSourceReplacesWhole()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("p", "old", {{"a", 1}, {"b", 2}}, "9").package("q", "old", {{"a", 3}});
    low.catalogue.word("k", "old").linked("p is_a k");
    high.catalogue.package("p", "new", {{"a", 4}}, "1").word("k", "new").linked("k is_a p");
    const auto index = buildIndex({&low, &high});

    const PackageNode *p = packageOf(index, "p");
    const KeywordNode *k = keywordOf(index, "k");
    QCOMPARE(p->type().toString(), QString("new"));
    QCOMPARE(p->revision().toString(), QString("1"));
    QCOMPARE(p->manifest(), QJsonObject({{"a", 4}}));
    QCOMPARE(packageOf(index, "q")->manifest(), QJsonObject({{"a", 3}}));
    QCOMPARE(k->displayString().toString(), QString("new"));
    // Links of either source join the winners.
    QCOMPARE(ends(p->outLinks()), QString("0:k"));
    QCOMPARE(p->outLinks().first().node, k);
    QCOMPARE(ends(p->inLinks()), QString("0:k"));
    QCOMPARE(packageIds(index), QString("p q"));
    QCOMPARE(packageIds(index, "old"), QString("q"));
}

void TestPackageIndex::replacementMayBeOfOtherKind()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("x").word("y", "y").linked("x is_a y");
    high.catalogue.word("x", "x").package("y").word("same source", "z").package("same source");
    const auto index = buildIndex({&low, &high});
    QVERIFY(!packageOf(index, "x"));
    QVERIFY(!keywordOf(index, "y"));
    QCOMPARE(ends(keywordOf(index, "x")->outLinks()), QString("0:y"));
    QCOMPARE(packageIds(index), QString("y"));
    QCOMPARE(keywordIds(index), QString("x same source"));
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
    QCOMPARE(keywordIds(index), QString("k"));
    QCOMPARE(ends(packageOf(index, "p")->outLinks()), QString("42:k"));
    QCOMPARE(log.lines("warning"), QStringList());
}

void TestPackageIndex::keepsLinksInOrderAndDoubled()
{
    MemorySource low;
    MemorySource high;
    low.catalogue.package("p").word("a", "a").word("b", "b");
    low.catalogue.linked("p uses b, p is_a a, a is_a a");
    high.catalogue.linked("p is_a a, b is a");
    const auto index = buildIndex({&low, &high});
    QCOMPARE(ends(packageOf(index, "p")->outLinks()), QString("5:b 0:a 0:a"));
    QCOMPARE(ends(keywordOf(index, "a")->inLinks()), QString("0:p 0:a 0:p 4:b"));
    QCOMPARE(ends(keywordOf(index, "a")->outLinks()), QString("0:a"));
}

void TestPackageIndex::reportsLinksAndDuration()
{
    LogRecorder log("norvak.package.index");
    buildIndex(MemoryCatalogue().package("p").word("k", "k").linked("p is k, p is_a nobody"));
    const QStringList lines = log.lines();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines.at(0), QString("debug: Creating link between \"p\" and \"k\" with type 4"));
    QCOMPARE(lines.at(1), QString("debug: Cannot link between \"p\" and \"nobody\""));
    const QRegularExpression duration("^debug: Package index build took [0-9.e-]+ msecs$");
    QVERIFY2(duration.match(lines.at(2)).hasMatch(), qPrintable(lines.at(2)));
}

void TestPackageIndex::choosesActiveLanguage_data()
{
    Columns<QString, QStringList, QString>("locale", "languages", "expected")
        .row("language of the locale", "de_AT", {"de", "en"}, "de")
        .row("whole name first", "de_AT", {"de", "de_AT"}, "de_AT")
        .row("nothing fits", "fr_FR", {"de", "en"}, "en")
        .row("nothing declared", "de_DE", {}, "en")
        .row("other country", "de_AT", {"de_DE"}, "en")
        .row("locale without country", "C", {"C"}, "C");
}

void TestPackageIndex::choosesActiveLanguage()
{
    QFETCH(QString, locale);
    QFETCH(QStringList, languages);
    const QLocale before;
    QLocale::setDefault(QLocale(locale));
    MemorySource other;
    other.catalogue.languages.clear();
    MemorySource source;
    source.catalogue.languages = languages;
    const auto index = buildIndex({&other, &source});
    QLocale::setDefault(before);
    QTEST(index->activeLanguage().toString(), "expected");
}

void TestPackageIndex::ordersPackagesByTypeThenSortKey()
{
    MemoryCatalogue catalogue;
    catalogue.word("chair", "Chair").word("table", "table").word("old", "Old");
    catalogue.package("t1", "b").package("c1", "b").package("z", "B").package("none", "b");
    catalogue.package("c2", "b").package("deep", "a:b").package("sibling", "a-b").package("a", "a");
    catalogue.linked("t1 is_a table, c1 is_a chair, c2 is_a chair, c2 is old");
    // "#none" < "Chair#c1" < "Chair:Old#c2" < "table#t1", the case of the types counting.
    QCOMPARE(packageIds(buildIndex(catalogue)), QString("z a sibling deep none c1 c2 t1"));
}

void TestPackageIndex::ordersKeywordsByDisplayString()
{
    MemoryCatalogue catalogue;
    catalogue.word("1", "pear").word("2", "Apple").word("3", "banana");
    catalogue.word("4", "lemon", KeywordType::Literal);
    catalogue.keyword("5", KeywordType::Noun, {{"en", "", "cherries"}});
    catalogue.word("6", "LEMON", KeywordType::Category);
    QCOMPARE(keywordIds(buildIndex(catalogue)), QString("2 3 5 4 6 1"));
}

void TestPackageIndex::typeRangesCoverSubTypes()
{
    MemoryCatalogue catalogue;
    catalogue.package("1", "a:b:c").package("2", "a:b").package("3", "a:d").package("4", "a-b");
    catalogue.package("5", "").package("6", "ab").package("7", "a").package("8", "e:f:g");
    const auto index = buildIndex(catalogue);
    QCOMPARE(packageIds(index, "a:b"), QString("2 1"));
    QCOMPARE(packageIds(index, "a:b:c"), QString("1"));
    // A sibling that sorts between a type and its sub-types is part of the range.
    QCOMPARE(packageIds(index, "a"), QString("7 4 2 1 3"));
    QCOMPARE(packageIds(index, "e:f"), QString("8"));
    QVERIFY(!PackageIndex::selectPackages(index, "a:", {}, {}).isValid());
    QVERIFY(!PackageIndex::selectPackages(index, "A", {}, {}).isValid());
}

void TestPackageIndex::typeOfManyLevelsHasBoundedRanges()
{
    const QString deep = QString(":").repeated(1 << 20);
    const auto index = buildIndex(MemoryCatalogue().package("p", deep).package("q", "::"));
    QCOMPARE(packageIds(index, deep), QString("p"));
    QCOMPARE(packageIds(index, ":"), QString("q p"));
    QCOMPARE(packageIds(index, QString(":").repeated(200)), QString("p"));
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

void TestPackageIndex::selectionMayBeEmptyOrInvalid()
{
    const auto index = buildIndex(MemoryCatalogue().package("1", "a"));
    const auto never = [](PackageNode *) { return false; };
    const PackageList none = PackageIndex::selectPackages(index, "a", never, {});
    QVERIFY(none.isValid());
    QCOMPARE(none.size(), 0);
    const PackageList unknown = PackageIndex::selectPackages(index, "b", {}, {});
    QVERIFY(!unknown.isValid());
    QCOMPARE(unknown.size(), 0);
    QVERIFY(!PackageIndex::selectPackages({}, {}, {}, {}).isValid());
    QVERIFY(!PackageIndex::selectKeywords({}, {}).isValid());

    const PackageList packages(index, {nullptr});
    const KeywordList keywords(index, {nullptr});
    for (const int i : {-1, 0, 1, INT_MAX, INT_MIN}) {
        QCOMPARE(packages.id(i), QString());
        QCOMPARE(keywords.id(i), QString());
        QCOMPARE(keywords.displayString(i), QString());
        QCOMPARE(PackageList().id(i), QString());
    }
}

void TestPackageIndex::selectsByTypeAndSortsStably()
{
    MemoryCatalogue catalogue;
    catalogue.package("1", "a").package("2", "a:b").package("3", "a:b").package("4", "c");
    const auto index = buildIndex(catalogue);
    const auto isOdd = [](PackageNode *node) { return node->id().toInt() % 2 == 1; };
    QCOMPARE(ids(PackageIndex::selectPackages(index, {}, isOdd, {})), QString("1 3"));
    QCOMPARE(ids(PackageIndex::selectPackages(index, "a:b", isOdd, {})), QString("3"));

    int calls = 0;
    const auto evenFirst = [&calls](PackageNode *a, PackageNode *b) {
        ++calls;
        return a->id().toInt() % 2 < b->id().toInt() % 2;
    };
    QCOMPARE(ids(PackageIndex::selectPackages(index, {}, {}, evenFirst)), QString("2 4 1 3"));
    calls = 0; // for a single hit
    QCOMPARE(ids(PackageIndex::selectPackages(index, "c", {}, evenFirst)), QString("4"));
    QCOMPARE(calls, 0);
}

void TestPackageIndex::selectsKeywords()
{
    MemoryCatalogue catalogue;
    catalogue.word("x", "pear").word("y", "apple").word("z", "plum");
    const KeywordList hits =
        PackageIndex::selectKeywords(buildIndex(catalogue), [](const KeywordNode *node) {
            return node->displayString().startsWith(QLatin1Char('p'));
        });
    QCOMPARE(ids(hits), QString("x z"));
    QCOMPARE(hits.displayString(1), QString("plum"));
    QCOMPARE(hits.id(0), QString("x"));
}

void TestPackageIndex::listKeepsItsIndexAlive()
{
    auto index = buildIndex(MemoryCatalogue().package("2", "a").package("3", "a"));
    const QWeakPointer<PackageIndex> watched = index;
    PackageList list = PackageIndex::selectPackages(index, "a", {}, {});
    index.reset();
    QVERIFY(!watched.isNull());
    list.list().removeFirst();
    QCOMPARE(ids(list), QString("3"));
    PackageList moved = std::move(list);
    QVERIFY(!watched.isNull());
    moved = PackageList();
    QVERIFY(watched.isNull());
}

QTEST_GUILESS_MAIN(TestPackageIndex)

#include "tst_packageindex.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "modeltools.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagematchergroup.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QJsonArray>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// The packages that \a matcher lets through, in the order of the index.
QString matches(PackageMatcher &matcher, const QSharedPointer<PackageIndex> &index)
{
    return ids(PackageIndex::selectPackages(index, "a", matcher.matchFunction(), {}));
}

using Members = std::initializer_list<PackageMatcher *>;

} // namespace

class TestMatchers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void hasKeyword_data();
    void hasKeyword();
    void matchesKeywordSearch_data();
    void matchesKeywordSearch();
    void hasManifestFieldsInGroups_data();
    void hasManifestFieldsInGroups();
    void emptyMeansUnrestricted();
    void closureOutlivesMatcher();
    void setterSignals();
    void groupNotifiesOncePerTurn();
    void groupForwardsMembers();
    void groupClearKeepsForwarding();
    void groupRefusesNullAndItself();
    void groupMemberDestroyed();

private:
    ScopedDataLocation m_location;
    QSharedPointer<PackageIndex> m_index;
};

void TestMatchers::initTestCase()
{
    MemoryCatalogue catalogue;
    catalogue.word("k.car", "car").word("k.vehicle", "vehicle").word("k.oak", "Oak");
    catalogue.keyword("k.cars", KeywordType::Noun, {{"en", "motor", "cars"}});
    catalogue.keyword("k.long", KeywordType::Name, {{"en", "blue tree"}, {"en", "tree"}});
    catalogue.keyword("k.short", KeywordType::Name, {{"en", "tree"}, {"en", "blue tree"}});
    catalogue.package("car", "a", {{"name", QJsonValue::Null}})
        .package("cars", "a", {{"name", false}})
        .package("long", "a", {{"name", ""}, {"size", QJsonArray()}})
        .package("none", "a")
        .package("oak", "a", {{"Name", "Oak"}})
        .package("short", "a", {{"name", 0}})
        .package("uncar", "a", {{"size", 1}});
    catalogue.linked("car is_a k.car, k.car is_a k.vehicle, cars contains k.cars, oak is k.oak");
    catalogue.linked("long is k.long, short is k.short, uncar is_a k.car, uncar is_not_a k.car");
    QLocale::setDefault(QLocale("en_GB"));
    m_index = buildIndex(catalogue);
}

void TestMatchers::hasKeyword_data()
{
    Columns<QString, QString>("keywordId", "expected")
        .row("direct", "k.oak", "oak")
        .row("direct, but for one that is not", "k.car", "car")
        .row("through a link", "k.vehicle", "car uncar")
        .row("other case", "K.CAR", "")
        .row("unknown", "k.caravan", "");
}

void TestMatchers::hasKeyword()
{
    QFETCH(QString, keywordId);
    HasKeyword matcher;
    matcher.setKeywordId(keywordId);
    QTEST(matches(matcher, m_index), "expected");
}

void TestMatchers::matchesKeywordSearch_data()
{
    Columns<QString, QString, QString>("search", "partial", "full")
        .row("case ignored", "CAR", "cars car", "car")
        .row("plural", "cars", "cars", "cars")
        .row("singular of a pair", "motor", "cars", "cars")
        .row("inherited", "vehicle", "car uncar", "car uncar")
        .row("trailing blank", "car ", "", "")
        .row("two words are one needle", "blue tree", "long short", "long short")
        .row("a partial hit hides a full one behind it", "tree", "long short", "short")
        .row("no expression", "c.r", "", "")
        .row("identifiers aren't searched", "k.car", "", "");
}

void TestMatchers::matchesKeywordSearch()
{
    QFETCH(QString, search);
    MatchesKeywordSearch matcher;
    matcher.setSearchString(search);
    QTEST(matches(matcher, m_index), "partial");
    matcher.setMatchMode(MatchesKeywordSearch::FullMatch);
    QTEST(matches(matcher, m_index), "full");
}

void TestMatchers::hasManifestFieldsInGroups_data()
{
    const auto all = PackageMatcherGroup::MatchAll;
    const auto any = PackageMatcherGroup::MatchAny;
    Columns<PackageMatcherGroup::MatchRequirement, QStringList, QString>(
        "requirement", "fields", "expected")
        .row("null, false, empty and 0 are there", all, {"name"}, "cars long short car")
        .row("other case", all, {"Name"}, "oak")
        .row("any type", all, {"size"}, "long uncar")
        .row("nowhere", all, {"colour"}, "")
        .row("all of two", all, {"name", "size"}, "long")
        .row("any of two", any, {"size", "Name"}, "long oak uncar")
        .row("an unrestricting member is left out of all", all, {"size", ""}, "long uncar")
        .row("an unrestricting member is left out of any", any, {"size", ""}, "long uncar");
}

void TestMatchers::hasManifestFieldsInGroups()
{
    QFETCH(PackageMatcherGroup::MatchRequirement, requirement);
    QFETCH(QStringList, fields);
    PackageMatcherGroup group;
    group.setMatchRequirement(requirement);
    for (const QString &field : fields) {
        auto *member = new HasManifestField(&group);
        member->setName(field);
        group.addMatcher(member);
    }
    QTEST(matches(group, m_index), "expected");
}

void TestMatchers::emptyMeansUnrestricted()
{
    HasKeyword hasKeyword;
    HasManifestField hasField;
    MatchesKeywordSearch search;
    search.setMatchMode(MatchesKeywordSearch::FullMatch);
    PackageMatcherGroup group;
    QVERIFY(!group.matchFunction());
    for (PackageMatcher *matcher : Members{&hasKeyword, &hasField, &search}) {
        QVERIFY(!matcher->matchFunction());
        group.addMatcher(matcher);
    }
    QVERIFY(!group.matchFunction());
    group.setMatchRequirement(PackageMatcherGroup::MatchAny);
    QVERIFY(!group.matchFunction());
    hasKeyword.setKeywordId("k.oak");
    QCOMPARE(matches(group, m_index), QString("oak"));
}

void TestMatchers::closureOutlivesMatcher()
{
    std::function<bool(PackageNode *)> function;
    {
        HasKeyword hasKeyword;
        hasKeyword.setKeywordId("k.oak");
        HasManifestField hasField;
        hasField.setName("size");
        PackageMatcherGroup group;
        group.setMatchRequirement(PackageMatcherGroup::MatchAny);
        group.addMatcher(&hasKeyword);
        group.addMatcher(&hasField);
        function = group.matchFunction();
        hasKeyword.setKeywordId("k.car");
    }
    const auto list = PackageIndex::selectPackages(m_index, "a", function, {});
    QCOMPARE(ids(list), QString("long oak uncar"));
}

void TestMatchers::setterSignals()
{
    HasKeyword hasKeyword;
    HasManifestField hasField;
    MatchesKeywordSearch search;
    PackageMatcherGroup group;
    SignalLog log;
    for (PackageMatcher *matcher : Members{&hasKeyword, &hasField, &search, &group})
        log.add(*matcher, &PackageMatcher::updateRequested, "update");
    log.add(hasKeyword, &HasKeyword::keywordIdChanged, "keywordId")
        .add(hasField, &HasManifestField::nameChanged, "name")
        .add(search, &MatchesKeywordSearch::searchStringChanged, "search")
        .add(search, &MatchesKeywordSearch::matchModeChanged, "mode")
        .add(group, &PackageMatcherGroup::matchRequirementChanged, "requirement");
    const auto setAll = [&] {
        hasKeyword.setKeywordId("a");
        hasField.setName("a");
        search.setSearchString("a");
        search.setMatchMode(MatchesKeywordSearch::FullMatch);
        group.setMatchRequirement(PackageMatcherGroup::MatchAny);
        return log.take();
    };
    QCOMPARE(
        setAll(), (QStringList{
                      "keywordId", "update", "name", "update", "search", "update", "mode", "update",
                      "requirement", "update"}));
    QCOMPARE(setAll(), QStringList()); // nothing is new
    const QMetaObject *meta = group.metaObject();
    QVERIFY(!meta->property(meta->indexOfProperty("matchRequirement")).hasNotifySignal());
}

void TestMatchers::groupNotifiesOncePerTurn()
{
    HasKeyword a, b, c;
    PackageMatcherGroup group;
    SignalLog log;
    log.add(group, &PackageMatcherGroup::matchersChanged, "matchers")
        .add(group, &PackageMatcher::updateRequested, "update");
    const auto nextTurn = [&log] {
        QCoreApplication::processEvents();
        return log.take();
    };
    for (PackageMatcher *member : Members{&a, &b, &c, &b})
        group.addMatcher(member);
    QCOMPARE(log.take(), QStringList());
    QCOMPARE(nextTurn(), (QStringList{"matchers", "update"}));

    group.addMatcher(&a);
    HasKeyword stranger;
    group.removeMatcher(&stranger);
    QCOMPARE(nextTurn(), QStringList());
    group.removeMatcher(&b);
    QCOMPARE(nextTurn(), (QStringList{"matchers", "update"}));
}

void TestMatchers::groupForwardsMembers()
{
    HasKeyword member;
    PackageMatcherGroup inner, outer;
    inner.addMatcher(&member);
    outer.addMatcher(&inner);
    QCoreApplication::processEvents();
    QSignalSpy spy(&outer, &PackageMatcher::updateRequested);
    member.setKeywordId("a");
    QCOMPARE(spy.count(), 1);
    inner.removeMatcher(&member);
    QTRY_COMPARE(spy.count(), 2);
    member.setKeywordId("b");
    QCOMPARE(spy.count(), 2);
}

void TestMatchers::groupClearKeepsForwarding()
{
    HasKeyword member;
    PackageMatcherGroup group;
    group.addMatcher(&member);
    QCoreApplication::processEvents();
    QSignalSpy changed(&group, &PackageMatcherGroup::matchersChanged);
    auto property = group.matchers();
    QCOMPARE(property.at(&property, 0), &member);
    QCOMPARE(property.at(&property, 1), nullptr);
    property.clear(&property);
    property.clear(&property); // already empty
    QTRY_COMPARE(changed.count(), 1);
    QSignalSpy updates(&group, &PackageMatcher::updateRequested);
    member.setKeywordId("a");
    QCOMPARE(updates.count(), 1);
    QVERIFY(!group.matchFunction());
    group.addMatcher(&member); // as a binding does that is evaluated again
    member.setKeywordId("b");
    QCOMPARE(updates.count(), 2);
}

void TestMatchers::groupRefusesNullAndItself()
{
    PackageMatcherGroup outer, inner, innermost;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("null is no matcher"));
    outer.addMatcher(nullptr);
    outer.removeMatcher(nullptr);
    outer.addMatcher(&inner);
    inner.addMatcher(&innermost);
    for (PackageMatcher *ring : {&outer, &inner, &innermost}) {
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("can't be a member of itself"));
        innermost.addMatcher(ring);
    }
    // A former member still sends its signal, so it can't hold the group either.
    auto property = outer.matchers();
    property.clear(&property);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("can't be a member of itself"));
    inner.addMatcher(&outer);
    QVERIFY(!outer.matchFunction());
    innermost.setMatchRequirement(PackageMatcherGroup::MatchAny);
}

void TestMatchers::groupMemberDestroyed()
{
    PackageMatcherGroup group;
    {
        HasManifestField member;
        member.setName("size");
        group.addMatcher(&member);
        QCOMPARE(matches(group, m_index), QString("long uncar"));
        QCoreApplication::processEvents();
    }
    QSignalSpy spy(&group, &PackageMatcher::updateRequested);
    QVERIFY(!group.matchFunction());
    QTRY_COMPARE(spy.count(), 1);
}

QTEST_GUILESS_MAIN(TestMatchers)
#include "tst_matchers.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagematchergroup.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QJsonArray>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// The packages that \a matcher lets through, in the order of their identifiers.
QString matches(PackageMatcher &matcher, const QSharedPointer<PackageIndex> &index)
{
    QStringList ids;
    for (const PackageNode *node :
         PackageIndex::selectPackages(index, QString(), matcher.matchFunction(), {}))
        ids.append(node->id().toString());
    ids.sort();
    return ids.join(' ');
}

/// A matcher with a fixed answer, which writes its name to a log when it is asked.
class FixedMatcher : public PackageMatcher
{
public:
    FixedMatcher(QString name, bool answer, QStringList &log)
        : m_name(std::move(name))
        , m_answer(answer)
        , m_log(log)
    {}

    std::function<bool(PackageNode *)> matchFunction() override
    {
        return [this](PackageNode *) {
            m_log.append(m_name);
            return m_answer;
        };
    }

private:
    const QString m_name;
    const bool m_answer;
    QStringList &m_log;
};

using Names = QStringList;

/// The names of the signals of \a object that are emitted during the recorder's life, in order.
class SignalLog
{
public:
    template<typename Object>
    SignalLog &add(Object *object, void (Object::*signal)(), const QString &name)
    {
        m_connections.append(
            QObject::connect(object, signal, object, [this, name] { m_names.append(name); }));
        return *this;
    }
    ~SignalLog()
    {
        for (const auto &connection : qAsConst(m_connections))
            QObject::disconnect(connection);
    }
    QStringList take() { return std::exchange(m_names, {}); }

private:
    QStringList m_names;
    QList<QMetaObject::Connection> m_connections;
};

} // namespace

class TestMatchers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void hasKeyword_data();
    void hasKeyword();
    void hasManifestField_data();
    void hasManifestField();
    void matchesKeywordSearch_data();
    void matchesKeywordSearch();
    void emptyMeansUnrestricted();
    void closureOutlivesMatcher();
    void setterSignals();
    void groupOfMembers_data();
    void groupOfMembers();
    void groupStopsEarly();
    void groupNotifiesOncePerTurn();
    void groupForwardsMembers();
    void groupClearKeepsForwarding();
    void groupRefusesNullAndItself();
    void groupMemberDestroyed();
    void listProperty();

private:
    ScopedDataLocation m_location;
    QSharedPointer<PackageIndex> m_index;
};

void TestMatchers::initTestCase()
{
    MemoryCatalogue catalogue;
    catalogue.word("k.car", "car").word("k.vehicle", "vehicle").word("k.oak", "Oak");
    catalogue.keyword("k.cars", KeywordType::Noun, {{"en", "motor", "cars"}});
    catalogue.keyword("k.long", KeywordType::Name, {{"en", "blue tree", {}}, {"en", "tree", {}}});
    catalogue.keyword("k.short", KeywordType::Name, {{"en", "tree", {}}, {"en", "blue tree", {}}});
    catalogue.package("car", "a", {{"name", QJsonValue::Null}})
        .package("cars", "a", {{"name", false}})
        .package("long", "a", {{"name", ""}, {"size", QJsonArray()}})
        .package("none", "a")
        .package("oak", "a", {{"Name", "Oak"}})
        .package("short", "a", {{"name", 0}})
        .package("uncar", "a", {{"size", 1}});
    catalogue.link("car", IsA, "k.car").link("k.car", IsA, "k.vehicle");
    catalogue.link("cars", Contains, "k.cars").link("oak", Is, "k.oak");
    catalogue.link("long", Is, "k.long").link("short", Is, "k.short");
    catalogue.link("uncar", IsA, "k.car").link("uncar", IsNotA, "k.car");
    QLocale::setDefault(QLocale("en_GB"));
    m_index = buildIndex(catalogue);
}

void TestMatchers::hasKeyword_data()
{
    QTest::addColumn<QString>("keywordId");
    QTest::addColumn<QString>("expected");

    QTest::newRow("direct") << "k.oak"
                            << "oak";
    QTest::newRow("direct, but for one that is not") << "k.car"
                                                     << "car";
    QTest::newRow("through a link") << "k.vehicle"
                                    << "car uncar";
    QTest::newRow("other case") << "K.CAR"
                                << "";
    QTest::newRow("unknown") << "k.caravan"
                             << "";
}

void TestMatchers::hasKeyword()
{
    QFETCH(QString, keywordId);
    HasKeyword matcher;
    matcher.setKeywordId(keywordId);
    QTEST(matches(matcher, m_index), "expected");
}

void TestMatchers::hasManifestField_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");

    QTest::newRow("null, false, empty and 0 are there") << "name"
                                                        << "car cars long short";
    QTest::newRow("other case") << "Name"
                                << "oak";
    QTest::newRow("any type") << "size"
                              << "long uncar";
    QTest::newRow("nowhere") << "colour"
                             << "";
}

void TestMatchers::hasManifestField()
{
    QFETCH(QString, name);
    HasManifestField matcher;
    matcher.setName(name);
    QTEST(matches(matcher, m_index), "expected");
}

void TestMatchers::matchesKeywordSearch_data()
{
    QTest::addColumn<QString>("search");
    QTest::addColumn<QString>("partial");
    QTest::addColumn<QString>("full");

    QTest::newRow("case ignored") << "CAR"
                                  << "car cars"
                                  << "car";
    QTest::newRow("plural") << "cars"
                            << "cars"
                            << "cars";
    QTest::newRow("singular of a pair") << "motor"
                                        << "cars"
                                        << "cars";
    QTest::newRow("inherited") << "vehicle"
                               << "car uncar"
                               << "car uncar";
    QTest::newRow("trailing blank") << "car "
                                    << ""
                                    << "";
    QTest::newRow("two words are one needle") << "blue tree"
                                              << "long short"
                                              << "long short";
    QTest::newRow("a partial hit hides a full one behind it") << "tree"
                                                              << "long short"
                                                              << "short";
    QTest::newRow("no expression") << "c.r"
                                   << ""
                                   << "";
    QTest::newRow("identifiers aren't searched") << "k.car"
                                                 << ""
                                                 << "";
    QTest::newRow("nothing") << "zebra"
                             << ""
                             << "";
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

void TestMatchers::emptyMeansUnrestricted()
{
    HasKeyword hasKeyword;
    HasManifestField hasField;
    MatchesKeywordSearch search;
    search.setMatchMode(MatchesKeywordSearch::FullMatch);
    PackageMatcherGroup group;
    QVERIFY(!group.matchFunction());
    for (PackageMatcher *matcher :
         std::initializer_list<PackageMatcher *>{&hasKeyword, &hasField, &search}) {
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
    const PackageList list = PackageIndex::selectPackages(m_index, "a", function, {});
    QCOMPARE(list.size(), 3);
    QCOMPARE(list.id(1), QString("oak"));
}

void TestMatchers::setterSignals()
{
    HasKeyword hasKeyword;
    HasManifestField hasField;
    MatchesKeywordSearch search;
    PackageMatcherGroup group;
    SignalLog log;
    log.add(&hasKeyword, &HasKeyword::keywordIdChanged, "keywordId")
        .add<PackageMatcher>(&hasKeyword, &PackageMatcher::updateRequested, "update")
        .add(&hasField, &HasManifestField::nameChanged, "name")
        .add<PackageMatcher>(&hasField, &PackageMatcher::updateRequested, "update")
        .add(&search, &MatchesKeywordSearch::searchStringChanged, "search")
        .add(&search, &MatchesKeywordSearch::matchModeChanged, "mode")
        .add<PackageMatcher>(&search, &PackageMatcher::updateRequested, "update")
        .add(&group, &PackageMatcherGroup::matchRequirementChanged, "requirement")
        .add(&group, &PackageMatcherGroup::matchersChanged, "matchers")
        .add<PackageMatcher>(&group, &PackageMatcher::updateRequested, "update");

    for (int round = 0; round < 2; ++round) { // the second time nothing is new
        const bool isNew = round == 0;
        hasKeyword.setKeywordId("a");
        QCOMPARE(log.take(), isNew ? (Names{"keywordId", "update"}) : Names());
        hasField.setName("a");
        QCOMPARE(log.take(), isNew ? (Names{"name", "update"}) : Names());
        search.setSearchString("a");
        QCOMPARE(log.take(), isNew ? (Names{"search", "update"}) : Names());
        search.setMatchMode(MatchesKeywordSearch::FullMatch);
        QCOMPARE(log.take(), isNew ? (Names{"mode", "update"}) : Names());
        group.setMatchRequirement(PackageMatcherGroup::MatchAny);
        QCOMPARE(log.take(), isNew ? (Names{"requirement", "update"}) : Names());
    }
    const QMetaObject *meta = group.metaObject();
    QVERIFY(!meta->property(meta->indexOfProperty("matchRequirement")).hasNotifySignal());
}

void TestMatchers::groupOfMembers_data()
{
    QTest::addColumn<PackageMatcherGroup::MatchRequirement>("requirement");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QString>("expected");

    const auto all = PackageMatcherGroup::MatchAll;
    const auto any = PackageMatcherGroup::MatchAny;
    QTest::newRow("all of two") << all << QStringList{"name", "size"} << "long";
    QTest::newRow("any of two") << any << QStringList{"size", "Name"} << "long oak uncar";
    QTest::newRow("an unrestricting member is left out of all")
        << all << QStringList{"size", ""} << "long uncar";
    QTest::newRow("an unrestricting member is left out of any")
        << any << QStringList{"size", ""} << "long uncar";
}

void TestMatchers::groupOfMembers()
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

void TestMatchers::groupStopsEarly()
{
    QStringList log;
    FixedMatcher yes("yes", true, log);
    FixedMatcher no("no", false, log);
    FixedMatcher last("last", true, log);
    PackageMatcherGroup group;
    for (PackageMatcher *member : {&yes, &no, &last})
        group.addMatcher(member);
    QVERIFY(!group.matchFunction()(nullptr));
    QCOMPARE(log, (QStringList{"yes", "no"}));
    log.clear();
    group.removeMatcher(&yes);
    group.setMatchRequirement(PackageMatcherGroup::MatchAny);
    group.addMatcher(&yes);
    QVERIFY(group.matchFunction()(nullptr));
    QCOMPARE(log, (QStringList{"no", "last"}));
}

void TestMatchers::groupNotifiesOncePerTurn()
{
    HasKeyword a, b, c;
    PackageMatcherGroup group;
    SignalLog log;
    log.add(&group, &PackageMatcherGroup::matchersChanged, "matchers")
        .add<PackageMatcher>(&group, &PackageMatcher::updateRequested, "update");
    group.addMatcher(&a);
    group.addMatcher(&b);
    group.addMatcher(&c);
    group.addMatcher(&b);
    QCOMPARE(log.take(), Names());
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), (Names{"matchers", "update"}));

    group.addMatcher(&a);
    HasKeyword stranger;
    group.removeMatcher(&stranger);
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), Names());
    group.removeMatcher(&b);
    QCoreApplication::processEvents();
    QCOMPARE(log.take(), (Names{"matchers", "update"}));
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
    property.clear(&property);
    property.clear(&property); // already empty
    QTRY_COMPARE(changed.count(), 1);
    QSignalSpy updates(&group, &PackageMatcher::updateRequested);
    member.setKeywordId("a");
    QCOMPARE(updates.count(), 1);
    QVERIFY(!group.matchFunction());
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

void TestMatchers::listProperty()
{
    HasKeyword a, b;
    PackageMatcherGroup group;
    auto property = group.matchers();
    property.append(&property, &a);
    property.append(&property, &b);
    property.append(&property, &a);
    QCOMPARE(property.count(&property), 2);
    QCOMPARE(property.at(&property, 1), &b);
    QCOMPARE(property.at(&property, 2), nullptr);
    QCOMPARE(property.at(&property, -1), nullptr);
}

QTEST_GUILESS_MAIN(TestMatchers)
#include "tst_matchers.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/categorylistmodel.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/keyword.h"
#include "query/keywordsuggestionmodel.h"
#include "query/manifestbooleanfield.h"
#include "query/manifestfilefield.h"
#include "query/manifestsizefield.h"
#include "query/manifeststringfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagedata.h"
#include "query/packagelistmodel.h"
#include "query/packagematchergroup.h"
#include "query/sortbyintegerfield.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QThreadPool>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

void registerTypes()
{
    const char *uri = "Test";
    qmlRegisterType<PackageListModel>(uri, 1, 0, "PackageListModel");
    qmlRegisterType<CategoryListModel>(uri, 1, 0, "CategoryListModel");
    qmlRegisterType<KeywordSuggestionModel>(uri, 1, 0, "KeywordSuggestionModel");
    qmlRegisterType<Keyword>(uri, 1, 0, "Keyword");
    qmlRegisterType<PackageData>(uri, 1, 0, "PackageData");
    qmlRegisterUncreatableType<PackageMatcher>(uri, 1, 0, "PackageMatcher", "abstract");
    qmlRegisterUncreatableType<PackageSorter>(uri, 1, 0, "PackageSorter", "abstract");
    qmlRegisterUncreatableType<PackageReference>(uri, 1, 0, "PackageReference", "from a provider");
    qmlRegisterType<HasKeyword>(uri, 1, 0, "HasKeyword");
    qmlRegisterType<HasManifestField>(uri, 1, 0, "HasManifestField");
    qmlRegisterType<MatchesKeywordSearch>(uri, 1, 0, "MatchesKeywordSearch");
    qmlRegisterType<PackageMatcherGroup>(uri, 1, 0, "PackageMatcherGroup");
    qmlRegisterType<SortByIntegerField>(uri, 1, 0, "SortByIntegerField");
    qmlRegisterType<ManifestField>(uri, 1, 0, "ManifestField");
    qmlRegisterType<ManifestStringField>(uri, 1, 0, "ManifestStringField");
    qmlRegisterType<ManifestBooleanField>(uri, 1, 0, "ManifestBooleanField");
    qmlRegisterType<ManifestSizeField>(uri, 1, 0, "ManifestSizeField");
    qmlRegisterType<ManifestFileField>(uri, 1, 0, "ManifestFileField");
}

QByteArray document(const QString &body)
{
    return "import QtQml 2.15\nimport Test 1.0\nQtObject { " + body.toUtf8() + " }";
}

} // namespace

/// The classes as QML declares them, well and badly.
class TestQmlObjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void declaredModel();
    void declaredPackageData();
    void badDeclarations_data();
    void badDeclarations();
    void rejectedDeclarations_data();
    void rejectedDeclarations();
    void matcherDestroyedByScript();

private:
    /// The object that \a body declares, in a context with "provider"; null if QML refuses it.
    std::unique_ptr<QObject> create(const QString &body);
    QVariant evaluate(QObject *object, const QString &expression);

    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
    std::unique_ptr<QQmlEngine> m_engine;
};

void TestQmlObjects::initTestCase()
{
    registerTypes();
}

void TestQmlObjects::init()
{
    m_provider = std::make_unique<TestProvider>();
    auto &catalogue = m_provider->source.catalogue;
    catalogue.package("elm", "tree", {{"title", "Elm"}, {"rank", 2}, {"size", QJsonArray{3, 4}}});
    catalogue.package("oak", "tree", {{"title", "Oak"}, {"rank", 1}, {"model", "oak.bin"}});
    catalogue.package("pine", "tree", {{"rank", 3}});
    catalogue.word("leafy", "leafy").link("elm", Is, "leafy").link("oak", Is, "leafy");
    QVERIFY(m_provider->publish());
    m_engine = std::make_unique<QQmlEngine>();
    m_engine->rootContext()->setContextProperty("provider", m_provider.get());
}

void TestQmlObjects::cleanup()
{
    m_engine.reset();
    m_provider.reset();
    QThreadPool::globalInstance()->waitForDone();
}

std::unique_ptr<QObject> TestQmlObjects::create(const QString &body)
{
    QQmlComponent component(m_engine.get());
    component.setData(document(body), QUrl("test.qml"));
    return std::unique_ptr<QObject>(component.create());
}

QVariant TestQmlObjects::evaluate(QObject *object, const QString &expression)
{
    QQmlExpression evaluation(qmlContext(object), object, expression);
    bool isUndefined = false;
    const QVariant value = evaluation.evaluate(&isUndefined);
    return evaluation.hasError() ? QVariant(evaluation.error().toString()) : value;
}

void TestQmlObjects::declaredModel()
{
    const auto root = create(R"(
        property var model: PackageListModel {
            packageProvider: provider
            packageType: "tree"
            matcher: PackageMatcherGroup {
                matchRequirement: PackageMatcherGroup.MatchAll
                HasManifestField { name: "rank" }
                PackageMatcherGroup {
                    matchRequirement: PackageMatcherGroup.MatchAny
                    HasKeyword { keywordId: "leafy" }
                    MatchesKeywordSearch {
                        searchString: "fir"
                        matchMode: MatchesKeywordSearch.FullMatch
                    }
                }
            }
            sorter: SortByIntegerField { name: "rank" }
            ManifestStringField { name: "title"; defaultValue: "untitled" }
            ManifestSizeField { name: "size"; defaultValue: Qt.size(1, 2) }
            ManifestField { name: "rank" }
        })");
    QVERIFY(root);
    auto *model = root->property("model").value<PackageListModel *>();
    QVERIFY(model);
    QCOMPARE(model->roleNames().size(), 4); // at once, for the first view
    settle(*model);
    QCOMPARE(ids(*model), QString("oak elm"));
    QCOMPARE(model->data(model->index(1, 0), 32), QVariant("Elm"));
    QCOMPARE(model->data(model->index(0, 0), 33), QVariant(QSizeF(1, 2)));
    QCOMPARE(evaluate(root.get(), "model.packageAt(1)"), QVariant("elm"));
    QCOMPARE(evaluate(root.get(), "model.indexOf('oak')"), QVariant(0));
    QCOMPARE(evaluate(root.get(), "model.manifestField(1, 'rank')"), QVariant(2.0));
    QCOMPARE(evaluate(root.get(), "model.manifestField(7, 'rank') === undefined"), QVariant(true));
    QCOMPARE(evaluate(root.get(), "model.manifestFields.length"), QVariant(3));
    QCOMPARE(evaluate(root.get(), "model.matcher.matchers.length"), QVariant(2));
}

void TestQmlObjects::declaredPackageData()
{
    const auto root = create(R"(
        property var oak: PackageData {
            packageReference: provider.packageReference("oak")
            ManifestStringField { name: "title" }
            ManifestBooleanField { name: "big"; defaultValue: true }
            ManifestFileField { name: "model" }
        }
        property string title: oak.$.title
        property url model: oak.manifest.model
        property int status: oak.packageReference.status)");
    QVERIFY(root);
    QCOMPARE(root->property("title").toString(), QString("Oak"));
    QCOMPARE(root->property("status").toInt(), int(PackageReference::Installing));
    QCOMPARE(root->property("model").toUrl(), QUrl());
    m_provider->source.installer("oak")->succeed();
    QCOMPARE(root->property("status").toInt(), int(PackageReference::Installed));
    QCOMPARE(root->property("model").toUrl(), QUrl("memory:/oak/oak.bin"));
    evaluate(root.get(), "oak.$.title = 'mine'");
    QCOMPARE(evaluate(root.get(), "oak.$.title === undefined"), QVariant(true));
}

void TestQmlObjects::badDeclarations_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("warning"); // a regular expression; empty if there is none

    const QString model = "property var model: PackageListModel { packageProvider: provider; %1 }";
    QTest::newRow("null matcher") << model.arg("matcher: null; sorter: null") << "";
    QTest::newRow("null in a group")
        << model.arg("matcher: PackageMatcherGroup { matchers: { return [ null ] } }")
        << "null is no matcher";
    QTest::newRow("null given to addMatcher()")
        << "property var group: PackageMatcherGroup { Component.onCompleted: addMatcher(null) }"
        << "null is no matcher";
    QTest::newRow("null among the model's fields")
        << model.arg("manifestFields: { return [ null, null ] }") << "null is no manifest field";
    QTest::newRow("null among the data's fields")
        << "property var data: PackageData { manifestFields: { return [ null ] } }"
        << "null is no manifest field";
    QTest::newRow("a group in itself")
        << "property var group: PackageMatcherGroup { id: group; matchers: [ group ] }"
        << "a matcher group can't be a member of itself";
    QTest::newRow("no provider")
        << "property var model: PackageListModel { packageProvider: QtObject {} }"
        << "^Object .* does not implement the IPackageProvider interface$";
    QTest::newRow("the model as its own provider")
        << "property var model: CategoryListModel { id: self; packageProvider: self }"
        << "^Object .* does not implement the IPackageProvider interface$";
    QTest::newRow("nothing as provider")
        << "property var word: Keyword { packageProvider: null; keywordId: 'leafy' }"
        << "";
    QTest::newRow("undefined as provider")
        << "property var model: KeywordSuggestionModel { packageProvider: undefined }"
        << "Unable to assign \\[undefined\\] to QObject";
    QTest::newRow("another type at run time")
        << model.arg("id: m; Component.onCompleted: m.matcher = m") << "Cannot assign";
    QTest::newRow("no reference")
        << "property var data: PackageData { packageReference: provider.packageReference('') }"
        << "";
    QTest::newRow("field without a name")
        << "property var data: PackageData { ManifestStringField {} }"
        << "";
    QTest::newRow("field named like a part of the map")
        << "property var data: PackageData { ManifestStringField { name: 'keys' } }"
        << "keys.* is not permitted";
}

void TestQmlObjects::badDeclarations()
{
    QFETCH(QString, body);
    QFETCH(QString, warning);
    const QtMsgType type = warning.startsWith("^Object") ? QtCriticalMsg : QtWarningMsg;
    if (!warning.isEmpty())
        QTest::ignoreMessage(type, QRegularExpression(warning));
    const auto root = create(body);
    QVERIFY(root);
    for (const char *name : {"model", "data", "word", "group"}) {
        if (auto *object = root->property(name).value<QObject *>())
            settle(*object); // what was declared badly must not break an update either
    }
}

void TestQmlObjects::rejectedDeclarations_data()
{
    QTest::addColumn<QString>("body");

    QTest::newRow("a field as matcher")
        << "property var m: PackageListModel { matcher: ManifestField {} }";
    QTest::newRow("a matcher as field") << "property var m: PackageListModel { HasKeyword {} }";
    QTest::newRow("a sorter in a group")
        << "property var g: PackageMatcherGroup { SortByIntegerField {} }";
    QTest::newRow("an abstract class") << "property var m: PackageMatcher {}";
    QTest::newRow("a read-only property") << "property var m: PackageListModel { count: 3 }";
}

void TestQmlObjects::rejectedDeclarations()
{
    QFETCH(QString, body);
    QVERIFY(!create(body));
}

void TestQmlObjects::matcherDestroyedByScript()
{
    const auto root = create(R"(
        property var make: Component { HasKeyword { keywordId: "leafy" } }
        property var model: PackageListModel {
            packageProvider: provider
            matcher: PackageMatcherGroup { }
        }
        property var member: null
        Component.onCompleted: {
            member = make.createObject(null)
            model.matcher.addMatcher(member)
        })");
    QVERIFY(root);
    auto *model = root->property("model").value<PackageListModel *>();
    settle(*model);
    QCOMPARE(ids(*model), QString("elm oak"));
    evaluate(root.get(), "member.destroy()");
    QTRY_COMPARE(ids(*model), QString("pine elm oak")); // one fewer to please
    evaluate(root.get(), "model.matcher.destroy()");
    QTRY_COMPARE(evaluate(root.get(), "model.matcher === null"), QVariant(true));
    evaluate(root.get(), "model.packageType = 'tree'");
    settle(*model);
    QCOMPARE(model->count(), 3);
}

QTEST_GUILESS_MAIN(TestQmlObjects)
#include "tst_qmlobjects.moc"

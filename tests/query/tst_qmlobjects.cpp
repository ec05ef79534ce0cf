// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "norvakpackagesqml.h"
#include "query/packagelistmodel.h"
#include "references/packagereference.h"
#include "support/columns.h"
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

QByteArray document(const QString &body)
{
    return "import QtQml 2.15\nimport Norvak.Packages 1.0\nQtObject { " + body.toUtf8() + " }";
}

} // namespace

/// The classes as QML declares them, well and badly.
class TestQmlObjects : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { registerQmlTypes("Norvak.Packages"); }
    void init();
    void cleanup();
    void declaredModel();
    void declaredPackageData();
    void badDeclarations_data();
    void badDeclarations();
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

void TestQmlObjects::init()
{
    m_provider = std::make_unique<TestProvider>();
    auto &catalogue = m_provider->source.catalogue;
    catalogue.package("elm", "tree", {{"title", "Elm"}, {"rank", 2}, {"size", QJsonArray{3, 4}}});
    catalogue.package("oak", "tree", {{"title", "Oak"}, {"rank", 1}, {"model", "oak.bin"}});
    catalogue.package("pine", "tree", {{"rank", 3}});
    catalogue.word("leafy", "leafy").linked("elm is leafy, oak is leafy");
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
    const QString stranger = "^Object .* does not implement the IPackageProvider interface$";
    const QString ring = "a matcher group can't be a member of itself";
    // The warning is a regular expression; empty if there is none.
    Columns<QString, QString>("declaration", "warning")
        .row(
            "null matcher",
            "PackageListModel { packageProvider: provider; matcher: null; sorter: null }", "")
        .row(
            "null in a group", "PackageMatcherGroup { matchers: { return [ null ] } }",
            "null is no matcher")
        .row(
            "null given to addMatcher()",
            "PackageMatcherGroup { Component.onCompleted: addMatcher(null) }", "null is no matcher")
        .row(
            "null among the model's fields",
            "PackageListModel { packageProvider: provider; manifestFields: { return [ null, null ] "
            "} }",
            "null is no manifest field")
        .row(
            "null among the data's fields", "PackageData { manifestFields: { return [ null ] } }",
            "null is no manifest field")
        .row("a group in itself", "PackageMatcherGroup { id: group; matchers: [ group ] }", ring)
        .row("no provider", "PackageListModel { packageProvider: QtObject {} }", stranger)
        .row(
            "the model as its own provider",
            "CategoryListModel { id: self; packageProvider: self }", stranger)
        .row("nothing as provider", "Keyword { packageProvider: null; keywordId: 'leafy' }", "")
        .row(
            "undefined as provider", "KeywordSuggestionModel { packageProvider: undefined }",
            "Unable to assign \\[undefined\\] to QObject")
        .row(
            "another type at run time",
            "PackageListModel { id: m; Component.onCompleted: m.matcher = m }", "Cannot assign")
        .row("no reference", "PackageData { packageReference: provider.packageReference('') }", "")
        .row("field without a name", "PackageData { ManifestStringField {} }", "")
        .row(
            "field named like a part of the map",
            "PackageData { ManifestStringField { name: 'keys' } }", "keys.* is not permitted");
}

void TestQmlObjects::badDeclarations()
{
    QFETCH(QString, declaration);
    QFETCH(QString, warning);
    const QtMsgType type = warning.startsWith("^Object") ? QtCriticalMsg : QtWarningMsg;
    if (!warning.isEmpty())
        QTest::ignoreMessage(type, QRegularExpression(warning));
    const auto root = create("property var declared: " + declaration);
    QVERIFY(root);
    // What was declared badly must not break an update either.
    settle(*root->property("declared").value<QObject *>());
}

void TestQmlObjects::rejectedDeclarations()
{
    const QStringList declarations{
        "PackageListModel { matcher: ManifestField {} }", "PackageListModel { HasKeyword {} }",
        "PackageMatcherGroup { SortByIntegerField {} }", "PackageListModel { count: 3 }"};
    for (const QString &declaration : declarations)
        QVERIFY2(!create("property var declared: " + declaration), qPrintable(declaration));
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

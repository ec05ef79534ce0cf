// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakpackagesqml.h"

#include <QFile>
#include <QMetaProperty>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQmlListReference>
#include <QScopedPointer>
#include <QtTest>

namespace {

/// The description of \a type in plugins.qmltypes, from its name to the next component.
QString description(const QString &qmltypes, const QString &type)
{
    const int end = qmltypes.indexOf("\"Norvak.Packages/" + type + " 1.0\"");
    const int begin = qmltypes.lastIndexOf("Component {", end);
    const int next = qmltypes.indexOf("Component {", end);
    return end < 0 ? QString() : qmltypes.mid(begin, next < 0 ? -1 : next - begin);
}

} // namespace

class QmlModuleTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void creates_data();
    void creates();
    void refusesAbstractTypes();
    void nestsMatchersAndFields();

private:
    /// The object that \a body makes after the module's import; null and a noted error if none.
    QObject *create(const QByteArray &body);

    QQmlEngine m_engine;
    QString m_errors;
};

/// Two programs are made of this: one registers nothing, so that the engine takes the plugin, the
/// other one registers the types, and the plugin lies in its import path all the same.
void QmlModuleTest::initTestCase()
{
#ifdef NKPM_REGISTERS_TYPES
    nk::pm::registerQmlTypes();
#endif
    m_engine.addImportPath(NKPM_QML_IMPORT_DIR);
}

QObject *QmlModuleTest::create(const QByteArray &body)
{
    QQmlComponent component(&m_engine);
    component.setData("import QtQml 2.15\nimport Norvak.Packages 1.0\n" + body, QUrl());
    QObject *object = component.create();
    m_errors = component.errorString();
    return object;
}

void QmlModuleTest::creates_data()
{
    QTest::addColumn<QString>("type");
    for (const char *type :
         {"PackageListModel", "CategoryListModel", "KeywordSuggestionModel", "HasKeyword",
          "HasManifestField", "MatchesKeywordSearch", "PackageMatcherGroup", "SortByIntegerField",
          "ManifestField", "ManifestBooleanField", "ManifestFileField", "ManifestSizeField",
          "ManifestStringField", "Keyword", "PackageData"})
        QTest::newRow(type) << type;
}

/// plugins.qmltypes is kept by hand of a build target; a class that grew a property shows here.
void QmlModuleTest::creates()
{
    QFETCH(const QString, type);
    const QScopedPointer<QObject> object(create(type.toUtf8() + " {}"));
    QVERIFY2(object, qPrintable(m_errors));
    const QMetaObject *meta = object->metaObject();
    QCOMPARE(QString(meta->className()), "nk::pm::" + type);

    QFile file(NKPM_QMLTYPES);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = description(QString::fromUtf8(file.readAll()), type);
    QVERIFY2(!text.isEmpty(), "build the target nkpm_qmltypes");
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QString property = QString("Property { name: \"%1\"").arg(meta->property(i).name());
        QVERIFY2(text.contains(property), qPrintable(property));
    }
}

void QmlModuleTest::refusesAbstractTypes()
{
    for (const QByteArray type :
         {"PackageMatcher", "PackageSorter", "SortByField", "PackageReference"}) {
        QVERIFY2(!create(type + " {}"), type);
        QVERIFY2(m_errors.contains(type), qPrintable(m_errors));
    }
}

void QmlModuleTest::nestsMatchersAndFields()
{
    const QScopedPointer<QObject> model(create(R"(PackageListModel {
        matcher: PackageMatcherGroup {
            matchRequirement: PackageMatcherGroup.MatchAny
            HasKeyword { keywordId: "a" }
            MatchesKeywordSearch { matchMode: MatchesKeywordSearch.FullMatch }
        }
        sorter: SortByIntegerField { name: "price" }
        resetWhenStuck: true
        ManifestStringField { name: "name" }
        ManifestFileField { name: "preview" }
    })"));
    QVERIFY2(model, qPrintable(m_errors));
    const auto roles = qobject_cast<QAbstractItemModel *>(model.data())->roleNames().values();
    QVERIFY(roles.contains("name"));
    QVERIFY(roles.contains("preview"));
    auto *group = model->property("matcher").value<QObject *>();
    QVERIFY(group);
    QQmlListReference matchers(group, "matchers", &m_engine);
    QCOMPARE(matchers.count(), 2);
}

QTEST_GUILESS_MAIN(QmlModuleTest)
#include "tst_qmlmodule.moc"

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

const QStringList creatableTypes{
    "PackageListModel",
    "CategoryListModel",
    "KeywordSuggestionModel",
    "HasKeyword",
    "HasManifestField",
    "MatchesKeywordSearch",
    "PackageMatcherGroup",
    "SortByIntegerField",
    "ManifestField",
    "ManifestBooleanField",
    "ManifestFileField",
    "ManifestSizeField",
    "ManifestStringField",
    "Keyword",
    "PackageData",
};

const QStringList abstractTypes{
    "PackageMatcher", "PackageSorter", "SortByField", "PackageReference"};

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
    void refuses_data();
    void refuses();
    void isDescribed_data() { creates_data(); }
    void isDescribed();
    void nestsMatchersAndFields();

private:
    /// The object that \a body makes after the module's import; null and a noted error if none.
    QObject *create(const QByteArray &body);

    QQmlEngine m_engine;
    QString m_errors;
};

/// Nothing is registered by this program: the engine finds the plugin.
void QmlModuleTest::initTestCase()
{
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
    for (const QString &type : creatableTypes)
        QTest::newRow(qPrintable(type)) << type;
}

void QmlModuleTest::creates()
{
    QFETCH(const QString, type);
    const QScopedPointer<QObject> object(create(type.toUtf8() + " {}"));
    QVERIFY2(object, qPrintable(m_errors));
    QCOMPARE(QString(object->metaObject()->className()), "nk::pm::" + type);
}

void QmlModuleTest::refuses_data()
{
    QTest::addColumn<QString>("type");
    for (const QString &type : abstractTypes)
        QTest::newRow(qPrintable(type)) << type;
}

void QmlModuleTest::refuses()
{
    QFETCH(const QString, type);
    QVERIFY(!create(type.toUtf8() + " {}"));
    QVERIFY2(m_errors.contains(type), qPrintable(m_errors));
}

/// plugins.qmltypes is kept by hand of a build target; a class that grew a property shows here.
void QmlModuleTest::isDescribed()
{
    QFETCH(const QString, type);
    QFile file(NKPM_QMLTYPES);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString text = description(QString::fromUtf8(file.readAll()), type);
    QVERIFY2(!text.isEmpty(), "build the target nkpm_qmltypes");
    const QScopedPointer<QObject> object(create(type.toUtf8() + " {}"));
    const QMetaObject *meta = object->metaObject();
    for (int i = meta->propertyOffset(); i < meta->propertyCount(); ++i) {
        const QString property = QStringLiteral("Property { name: \"%1\"")
                                     .arg(QString::fromLatin1(meta->property(i).name()));
        QVERIFY2(text.contains(property), qPrintable(property));
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

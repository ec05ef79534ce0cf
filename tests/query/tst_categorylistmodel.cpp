// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/categorylistmodel.h"
#include "support/columns.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

using Log = QStringList;

class TestCategoryListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_provider.reset(); }
    void listsCategories();
    void limitedToType_data();
    void limitedToType();
    void everyUpdateResets();

private:
    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
};

/// Categories "Trees", used by packages of type plant, and "Cars", used by none; a name "Oak".
void TestCategoryListModel::init()
{
    m_provider = std::make_unique<TestProvider>();
    m_provider->source.catalogue.word("trees", "Trees", KeywordType::Category)
        .word("cars", "Cars", KeywordType::Category)
        .word("oak", "Oak")
        .package("p", "plant:tree")
        .linked("p is_a oak, oak is_a trees");
    QVERIFY(m_provider->publish());
}

void TestCategoryListModel::listsCategories()
{
    CategoryListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    model.setPackageProvider(m_provider.get());
    settle(model);
    QCOMPARE(ids(model), QString("cars trees"));
    const QModelIndex cars = model.index(0, 0);
    QCOMPARE(model.data(cars, 1), QVariant("Cars"));
    QVERIFY(!model.data(cars, 2).isValid());
    QVERIFY(!model.data(QModelIndex(), 0).isValid());
    QCOMPARE(model.rowCount(cars), 0);
    QCOMPARE(model.roleNames(), (QHash<int, QByteArray>{{0, "id"}, {1, "name"}}));

    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("^Object .* does not implement"));
    model.setPackageProvider(this);
    QCOMPARE(model.packageProvider(), nullptr);
    settle(model);
    QCOMPARE(model.rowCount(), 0);
}

void TestCategoryListModel::limitedToType_data()
{
    Columns<QString, QString>("type", "expected")
        .row("type", "plant:tree", "trees")
        .row("upper type", "plant", "trees")
        .row("unknown type", "animal", "");
}

void TestCategoryListModel::limitedToType()
{
    QFETCH(QString, type);
    CategoryListModel model;
    model.setPackageType(type);
    model.setPackageProvider(m_provider.get());
    settle(model);
    QTEST(ids(model), "expected");
}

void TestCategoryListModel::everyUpdateResets()
{
    CategoryListModel model;
    ModelLog log(model);
    log.add(model, &CategoryListModel::packageTypeChanged, "type")
        .add(model, &CategoryListModel::packageProviderChanged, "provider");
    model.setPackageType("animal");
    settle(model);
    QCOMPARE(log.take(), (Log{"type", "reset"})); // also one that finds nothing
    for (int round = 0; round < 2; ++round) {
        model.setPackageProvider(m_provider.get());
        model.setPackageType("plant");
    }
    QCOMPARE(log.take(), (Log{"provider", "type"}));
    settle(model);
    QCOMPARE(log.take(), Log{"reset"}); // one for all changes of a turn
    QVERIFY(m_provider->publish());
    settle(model);
    QCOMPARE(log.take(), Log{"reset"}); // the same categories of another index
    QCOMPARE(ids(model), QString("trees"));
}

QTEST_GUILESS_MAIN(TestCategoryListModel)
#include "tst_categorylistmodel.moc"

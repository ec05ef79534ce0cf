// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "modeltools.h"
#include "query/categorylistmodel.h"
#include "support/scopeddatalocation.h"
#include "support/testprovider.h"

#include <QAbstractItemModelTester>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Log = QStringList;

/// Categories "Trees", used by packages of type plant, and "Cars", used by none; a name "Oak".
void fill(MemoryCatalogue &catalogue)
{
    catalogue.word("trees", "Trees", KeywordType::Category)
        .word("cars", "Cars", KeywordType::Category)
        .word("oak", "Oak");
    catalogue.package("p", "plant:tree").link("p", IsA, "oak").link("oak", IsA, "trees");
}

} // namespace

class TestCategoryListModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_provider.reset(new TestProvider); }
    void cleanup() { m_provider.reset(); }
    void withoutProvider();
    void listsCategories();
    void limitedToType_data();
    void limitedToType();
    void oneTaskPerTurn();
    void newIndexResets();
    void wrongProvider();

private:
    ScopedDataLocation m_location;
    std::unique_ptr<TestProvider> m_provider;
};

void TestCategoryListModel::withoutProvider()
{
    CategoryListModel model;
    ModelLog log(model);
    model.setPackageType("plant");
    settle(model);
    QCOMPARE(model.rowCount(), 0);
    QCOMPARE(log.take(), Log{"reset"}); // also an update that finds nothing ends in a reset
}

void TestCategoryListModel::listsCategories()
{
    fill(m_provider->source.catalogue);
    QVERIFY(m_provider->publish());
    CategoryListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    QSignalSpy changed(&model, &CategoryListModel::packageProviderChanged);
    model.setPackageProvider(m_provider.get());
    model.setPackageProvider(m_provider.get());
    QCOMPARE(changed.count(), 1);
    settle(model);
    QCOMPARE(ids(model), QString("cars trees"));
    const QModelIndex cars = model.index(0, 0);
    QCOMPARE(model.data(cars, 1), QVariant("Cars"));
    QVERIFY(!model.data(cars, 2).isValid());
    QVERIFY(!model.data(QModelIndex(), 0).isValid());
    QCOMPARE(model.rowCount(cars), 0);
    QCOMPARE(model.roleNames(), (QHash<int, QByteArray>{{0, "id"}, {1, "name"}}));
}

void TestCategoryListModel::limitedToType_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("expected");

    QTest::newRow("no limit") << ""
                              << "cars trees";
    QTest::newRow("type") << "plant:tree"
                          << "trees";
    QTest::newRow("upper type") << "plant"
                                << "trees";
    QTest::newRow("unknown type") << "animal"
                                  << "";
}

void TestCategoryListModel::limitedToType()
{
    fill(m_provider->source.catalogue);
    QVERIFY(m_provider->publish());
    QFETCH(QString, type);
    CategoryListModel model;
    model.setPackageType(type);
    model.setPackageProvider(m_provider.get());
    settle(model);
    QTEST(ids(model), "expected");
}

void TestCategoryListModel::oneTaskPerTurn()
{
    fill(m_provider->source.catalogue);
    QVERIFY(m_provider->publish());
    CategoryListModel model;
    ModelLog log(model);
    log.add(model, &CategoryListModel::packageTypeChanged, "type");
    log.add(model, &CategoryListModel::packageProviderChanged, "provider");
    model.setPackageProvider(m_provider.get());
    model.setPackageType("plant");
    model.setPackageType("plant");
    QCOMPARE(log.take(), (Log{"provider", "type"}));
    settle(model);
    QCOMPARE(log.take(), Log{"reset"});
}

void TestCategoryListModel::newIndexResets()
{
    fill(m_provider->source.catalogue);
    CategoryListModel model;
    model.setPackageProvider(m_provider.get());
    settle(model);
    ModelLog log(model);
    for (int round = 0; round < 2; ++round) {
        QVERIFY(m_provider->publish());
        settle(model);
        QCOMPARE(log.take(), Log{"reset"}); // the second time with the same categories
        QCOMPARE(ids(model), QString("cars trees"));
    }
}

void TestCategoryListModel::wrongProvider()
{
    fill(m_provider->source.catalogue);
    QVERIFY(m_provider->publish());
    CategoryListModel model;
    model.setPackageProvider(m_provider.get());
    settle(model);
    QTest::ignoreMessage(
        QtCriticalMsg, QRegularExpression("^Object QObject\\(.*\\) does not implement the "
                                          "IPackageProvider interface$"));
    QObject stranger;
    model.setPackageProvider(&stranger);
    QCOMPARE(model.packageProvider(), nullptr);
    settle(model);
    QCOMPARE(model.rowCount(), 0);
}

QTEST_GUILESS_MAIN(TestCategoryListModel)
#include "tst_categorylistmodel.moc"

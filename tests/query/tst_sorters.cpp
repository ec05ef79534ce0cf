// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "query/sortbyintegerfield.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

class TestSorters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sortByIntegerField_data();
    void sortByIntegerField();
    void renamingAsksForNoUpdate();
};

void TestSorters::sortByIntegerField_data()
{
    // Of the packages p0, p1, ..., undefined if "-".
    Columns<QJsonArray, QString>("values", "expected")
        .row("as numbers, not as texts", {2, 10, 1}, "p2 p0 p1")
        .row("negative before missing", {"-", 1, -1}, "p2 p0 p1")
        .row("texts and fractions count as 0", {1, "7", 2.5, -1}, "p3 p1 p2 p0")
        .row("equal ones keep the index's order", {5, 0, "-", 5, 0}, "p1 p2 p4 p0 p3")
        .row("beyond an int", {1, 3e9, -1}, "p2 p1 p0");
}

void TestSorters::sortByIntegerField()
{
    QFETCH(QJsonArray, values);
    MemoryCatalogue catalogue;
    for (int i = 0; i < values.size(); ++i) {
        const QJsonObject manifest =
            values.at(i) == "-" ? QJsonObject() : QJsonObject{{"rank", values.at(i)}};
        catalogue.package(QString("p%1").arg(i), "t", manifest);
    }
    ScopedDataLocation location;
    SortByIntegerField sorter;
    sorter.setName("rank");
    const auto sort = sorter.sortFunction();
    sorter.setName("other"); // the function has its own copy
    const auto index = buildIndex(catalogue);
    const PackageList list = PackageIndex::selectPackages(index, "t", {}, sort);
    // As an ordering like any other, which is asked at each comparison, it gives the same.
    const auto plain = [&sort](PackageNode *a, PackageNode *b) { return sort(a, b); };
    QCOMPARE(PackageIndex::selectPackages(index, "t", {}, plain).packages(), list.packages());
    QTEST(ids(list), "expected");
}

void TestSorters::renamingAsksForNoUpdate()
{
    SortByIntegerField sorter;
    QVERIFY(!sorter.sortFunction()); // without a name
    QSignalSpy named(&sorter, &SortByField::nameChanged);
    QSignalSpy updates(&sorter, &PackageSorter::updateRequested);
    sorter.setName("rank");
    sorter.setName("rank");
    QCOMPARE(named.count(), 1);
    QCOMPARE(updates.count(), 0);
}

QTEST_GUILESS_MAIN(TestSorters)
#include "tst_sorters.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "requirements.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/columns.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

class tst_Requirements : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void order_data();
    void order();
    void longChain();

private:
    ScopedDataLocation m_data;
};

void tst_Requirements::order_data()
{
    Columns<QStringList, QString, QString>("links", "from", "order")
        .row("nothing required", {}, "a", "a")
        .row("diamond, each once", {"ab", "ac", "bd", "cd"}, "a", "dbca")
        .row("doubled link", {"ab", "ab"}, "a", "ba")
        .row("itself", {"aa"}, "a", "a")
        .row("cycle", {"ab", "bc", "ca"}, "a", "cba")
        .row("two that share one", {"ac", "bc"}, "ab", "cab")
        .row("a keyword is no requirement", {"ak", "ab"}, "a", "ba");
}

void tst_Requirements::order()
{
    QFETCH(QStringList, links);
    QFETCH(QString, from);
    MemoryCatalogue catalogue;
    for (const char *id : {"a", "b", "c", "d"})
        catalogue.package(id);
    catalogue.word("k", "word");
    for (const auto &link : links)
        catalogue.link(link.left(1), Requires, link.mid(1));
    const auto index = buildIndex(catalogue);
    QVector<const PackageNode *> start;
    for (int i = 0; i < from.size(); ++i)
        start.append(index->getPackage(from.midRef(i, 1)));
    QString order;
    for (const auto *node : cli::withRequirements(start))
        order += node->id();
    QTEST(order, "order");
    auto direct = cli::requirementsOf(start.first()); // each once too
    std::sort(direct.begin(), direct.end());
    QVERIFY(std::adjacent_find(direct.begin(), direct.end()) == direct.end());
}

void tst_Requirements::longChain()
{
    constexpr int count = 50000;
    MemoryCatalogue catalogue;
    for (int i = 0; i < count; ++i) {
        catalogue.package(QString::number(i));
        catalogue.link(QString::number(i), Requires, QString::number(i + 1));
    }
    const auto index = buildIndex(catalogue);
    const QString first = "0";
    const auto all = cli::withRequirements({index->getPackage(QStringRef(&first))});
    QCOMPARE(all.size(), count);
    QCOMPARE(all.first()->id().toString(), QString::number(count - 1));
    QCOMPARE(all.last()->id().toString(), first);
}

QTEST_GUILESS_MAIN(tst_Requirements)
#include "tst_requirements.moc"

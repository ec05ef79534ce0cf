// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/syntheticcatalogue.h"

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "sources/localpackagesource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// All that an index tells of its nodes, one line each, in its order.
QStringList describe(const QSharedPointer<PackageIndex> &index)
{
    QStringList lines;
    for (const PackageNode *node : PackageIndex::selectPackages(index, {}, {}, {})) {
        QStringList keywords;
        for (const KeywordNode *keyword : node->keywords())
            keywords.append(keyword->id().toString());
        keywords.sort();
        lines.append(
            node->id() + ' ' + node->type() + ' ' + node->sortKey() + ' ' + keywords.join(',')
            + QJsonDocument(node->manifest()).toJson(QJsonDocument::Compact)
            + QString(" %1 %2").arg(node->inLinks().size()).arg(node->outLinks().size()));
    }
    for (const KeywordNode *node : PackageIndex::selectKeywords(index, {})) {
        lines.append(
            node->id() + ' ' + node->displayString() + ' ' + node->canonicalString()
            + QString(" %1").arg(node->type()));
    }
    return lines;
}

} // namespace

class TestSyntheticCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hasTheSizeAskedFor();
    void dependsOnItsSeedAlone();
    void treeHoldsTheSame();
    void tellsIfItCannotWrite();

private:
    ScopedDataLocation m_data;
};

void TestSyntheticCatalogue::hasTheSizeAskedFor()
{
    const auto index = buildIndex(SyntheticCatalogue({300, 120, 1200}, 1).contents());
    int links = 0;
    for (PackageNode *node : PackageIndex::selectPackages(index, {}, {}, {}).packages())
        links += node->outLinks().size();
    for (const KeywordNode *node : PackageIndex::selectKeywords(index, {}))
        links += node->outLinks().size();
    QCOMPARE(PackageIndex::selectPackages(index, {}, {}, {}).size(), 300);
    QCOMPARE(PackageIndex::selectKeywords(index, {}).size(), 120);
    QCOMPARE(links, 1200);
}

void TestSyntheticCatalogue::dependsOnItsSeedAlone()
{
    const CatalogueSize size{50, 20, 200};
    const QStringList first = describe(buildIndex(SyntheticCatalogue(size, 1).contents()));
    QCOMPARE(describe(buildIndex(SyntheticCatalogue(size, 1).contents())), first);
    QVERIFY(describe(buildIndex(SyntheticCatalogue(size, 2).contents())) != first);
}

void TestSyntheticCatalogue::treeHoldsTheSame()
{
    const SyntheticCatalogue catalogue({50, 20, 200}, 1);
    QTemporaryDir directory;
    QVERIFY(catalogue.writeTo(directory.filePath("tree")));
    LocalPackageSource source(directory.filePath("tree"), nullptr);
    QCOMPARE(describe(buildIndex({&source})), describe(buildIndex(catalogue.contents())));
}

void TestSyntheticCatalogue::tellsIfItCannotWrite()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    QVERIFY(!SyntheticCatalogue({1, 1, 0}, 1).writeTo(file.fileName() + "/below"));
}

QTEST_GUILESS_MAIN(TestSyntheticCatalogue)

#include "tst_syntheticcatalogue.moc"

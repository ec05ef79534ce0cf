// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"

#include <QtTest>

#include <thread>
#include <vector>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int threadCount = 4;

/// Runs \a work(thread number) on several threads at once and waits for all of them.
template<typename Work>
void onThreads(Work work)
{
    std::atomic<int> waiting{threadCount};
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&waiting, &work, i] {
            --waiting;
            while (waiting > 0)
                std::this_thread::yield();
            work(i);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
}

/// A number that depends on all that can be asked of an index.
int checksum(const QSharedPointer<PackageIndex> &index)
{
    int sum = 0;
    const auto hasKeyword = [](PackageNode *node) { return !node->keywords().isEmpty(); };
    const auto byId = [](PackageNode *a, PackageNode *b) { return a->id() < b->id(); };
    const PackageList packages = PackageIndex::selectPackages(index, {}, hasKeyword, byId);
    for (const PackageNode *node : packages) {
        sum += node->keywords().size() + node->manifest().size();
        sum += node->manifestValue("name").toString().size();
        sum += node->sortKey().size() + node->fileUrl("file").toString().size();
        sum += index->getPackage(node->id()) == node;
    }
    const QString type = packages.size() > 0 ? packages[0]->type().toString() : QString();
    const KeywordList keywords = PackageIndex::selectKeywords(
        index, [&type](KeywordNode *node) { return node->isUsedByType(&type); });
    for (int i = 0; i < keywords.size(); ++i)
        sum += keywords.displayString(i).size() + keywords.id(i).size();
    return sum;
}

} // namespace

class TestIndexThreads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void manyThreadsReadOneIndex();
    void buildsRunSideBySide();

private:
    ScopedDataLocation m_data;
    MemorySource m_source;
};

void TestIndexThreads::init()
{
    m_source.catalogue = SyntheticCatalogue({200, 100, 800}, 7).contents();
}

void TestIndexThreads::manyThreadsReadOneIndex()
{
    const int expected = checksum(buildIndex({&m_source}));
    QVERIFY(expected > 0);
    const auto index = buildIndex({&m_source}); // no manifest of it was read yet
    std::atomic<int> agreeing{0};
    onThreads([&](int) { agreeing += checksum(index) == expected; });
    QCOMPARE(int(agreeing), threadCount);
}

void TestIndexThreads::buildsRunSideBySide()
{
    const int expected = checksum(buildIndex({&m_source}));
    for (int round = 0; round < 5; ++round) {
        std::vector<QSharedPointer<PackageIndex>> indexes;
        for (int i = 0; i < threadCount; ++i) {
            indexes.push_back(QSharedPointer<PackageIndex>::create());
            indexes.back()->addSource(&m_source);
        }
        std::atomic<int> agreeing{0};
        onThreads([&](int i) {
            QSharedPointer<PackageIndex> own;
            own.swap(indexes[size_t(i)]);
            own->build();
            agreeing += checksum(own) == expected;
        });
        QCOMPARE(int(agreeing), threadCount);
    }
}

QTEST_GUILESS_MAIN(TestIndexThreads)

#include "tst_indexthreads.moc"

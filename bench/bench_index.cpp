// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <map>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int largest = 50000; // packages; with 20,000 keywords and 200,000 links

/// What the benchmarks share, made at first use. Lives in main(), inside the data directory's life.
class Shared
{
public:
    Shared() { s_current = this; }

    static const MemoryCatalogue &catalogue(int packages)
    {
        MemoryCatalogue &catalogue = s_current->m_catalogues[packages];
        if (catalogue.packages.isEmpty())
            catalogue =
                SyntheticCatalogue({packages, packages * 2 / 5, packages * 4}, 1).contents();
        return catalogue;
    }

    static QSharedPointer<PackageIndex> index()
    {
        if (!s_current->m_index)
            s_current->m_index = buildIndex(catalogue(largest));
        return s_current->m_index;
    }

private:
    inline static Shared *s_current = nullptr;
    std::map<int, MemoryCatalogue> m_catalogues;
    QSharedPointer<PackageIndex> m_index; // of the largest
};

/// A type of the first level, and a keyword that many packages have.
QString commonType()
{
    return Shared::catalogue(largest).packages.first().type.section(':', 0, 0);
}

KeywordNode *commonKeyword()
{
    const QString id = Shared::catalogue(largest).keywords.at(1).id;
    return Shared::index()->getKeyword(&id);
}

bool hasCommonKeyword(PackageNode *node)
{
    static KeywordNode *const keyword = commonKeyword();
    return node->keywords().contains(keyword);
}

bool isInOrder(PackageNode *a, PackageNode *b)
{
    return a->id() < b->id();
}

/// Reports the failure of \a state's verification. True if \a isRight.
bool verify(benchmark::State &state, bool isRight)
{
    if (!isRight)
        state.SkipWithError("wrong answer");
    return isRight;
}

void buildOfIndex(benchmark::State &state)
{
    const MemoryCatalogue &catalogue = Shared::catalogue(int(state.range(0)));
    const auto first = buildIndex(catalogue);
    int outLinks = 0;
    for (PackageNode *node : PackageIndex::selectPackages(first, {}, {}, {}).packages())
        outLinks += node->outLinks().size();
    for (const KeywordNode *node : PackageIndex::selectKeywords(first, {}))
        outLinks += node->outLinks().size();
    if (!verify(state, outLinks == catalogue.links.size()))
        return;
    MemorySource source;
    source.catalogue = catalogue;
    for (auto _ : state) {
        PackageIndex index;
        index.addSource(&source);
        index.build();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(buildOfIndex)
    ->Arg(500)
    ->Arg(5000)
    ->Arg(largest)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oNLogN);

void selectAllPackages(benchmark::State &state)
{
    const auto index = Shared::index();
    if (!verify(state, PackageIndex::selectPackages(index, {}, {}, {}).size() == largest))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(PackageIndex::selectPackages(index, {}, {}, {}));
}
BENCHMARK(selectAllPackages)->Unit(benchmark::kMicrosecond);

void selectPackagesOfType(benchmark::State &state)
{
    const auto index = Shared::index();
    const QString type = commonType();
    const auto isOfType = [&type](PackageNode *node) { return node->isOfType(&type); };
    const PackageList all = PackageIndex::selectPackages(index, {}, isOfType, {});
    if (!verify(
            state,
            all.size() > largest / 20
                && PackageIndex::selectPackages(index, type, {}, {}).packages() == all.packages()))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(PackageIndex::selectPackages(index, type, {}, {}));
    state.counters["packages"] = all.size();
}
BENCHMARK(selectPackagesOfType)->Unit(benchmark::kMicrosecond);

void selectPackagesWithKeyword(benchmark::State &state)
{
    const auto index = Shared::index();
    const PackageList hits = PackageIndex::selectPackages(index, {}, hasCommonKeyword, {});
    if (!verify(state, hits.size() > 0 && hits.size() < largest))
        return;
    for (auto _ : state) {
        benchmark::DoNotOptimize(PackageIndex::selectPackages(index, {}, hasCommonKeyword, {}));
    }
    state.counters["packages"] = hits.size();
}
BENCHMARK(selectPackagesWithKeyword)->Unit(benchmark::kMillisecond);

void selectAndSortPackages(benchmark::State &state)
{
    const auto index = Shared::index();
    const PackageList sorted = PackageIndex::selectPackages(index, {}, {}, isInOrder);
    const auto &packages = sorted.packages();
    if (!verify(state, std::is_sorted(packages.begin(), packages.end(), isInOrder)))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(PackageIndex::selectPackages(index, {}, {}, isInOrder));
}
BENCHMARK(selectAndSortPackages)->Unit(benchmark::kMillisecond);

void selectKeywordsThatMatch(benchmark::State &state)
{
    const auto index = Shared::index();
    const QString search = "dorfin";
    const auto matches = [&search](KeywordNode *node) { return node->matchLevel(&search) > 0; };
    const KeywordList hits = PackageIndex::selectKeywords(index, matches);
    bool areRight = hits.size() > 0;
    for (const KeywordNode *node : hits)
        areRight = areRight && node->displayString().contains(search, Qt::CaseInsensitive);
    if (!verify(state, areRight))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(PackageIndex::selectKeywords(index, matches));
    state.counters["keywords"] = hits.size();
}
BENCHMARK(selectKeywordsThatMatch)->Unit(benchmark::kMillisecond);

void selectKeywordsUsedByType(benchmark::State &state)
{
    const auto index = Shared::index();
    const QString type = commonType();
    const auto isUsed = [&type](KeywordNode *node) { return node->isUsedByType(&type); };
    const KeywordList hits = PackageIndex::selectKeywords(index, isUsed);
    if (!verify(state, hits.size() > 0 && hits.size() < Shared::catalogue(largest).keywords.size()))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(PackageIndex::selectKeywords(index, isUsed));
    state.counters["keywords"] = hits.size();
}
BENCHMARK(selectKeywordsUsedByType)->Unit(benchmark::kMillisecond);

void keywordsOfPackage(benchmark::State &state)
{
    const PackageList all = PackageIndex::selectPackages(Shared::index(), {}, {}, {});
    int withDirectLinks = 0;
    qint64 found = 0;
    for (const PackageNode *node : all) {
        const QSet<KeywordNode *> keywords = node->keywords();
        found += keywords.size();
        withDirectLinks += std::all_of(
            node->outLinks().begin(), node->outLinks().end(), [&keywords](const NodeLink &link) {
                return link.node->kind() != PackageIndexNode::Keyword || link.type == IsNotA
                       || keywords.contains(static_cast<KeywordNode *>(link.node));
            });
    }
    // Where a keyword is both linked and negated it is not among them; few packages have that.
    if (!verify(state, withDirectLinks > largest * 99 / 100))
        return;
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(all[next]->keywords());
        next = (next + 1) % all.size();
    }
    state.counters["keywords"] = double(found) / all.size();
}
BENCHMARK(keywordsOfPackage)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ScopedDataLocation data;
    Shared shared;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

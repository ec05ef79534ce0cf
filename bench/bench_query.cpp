// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "query/haskeyword.h"
#include "query/hasmanifestfield.h"
#include "query/matcheskeywordsearch.h"
#include "query/packagelistmodel.h"
#include "query/packagematchergroup.h"
#include "query/rowchanges.h"
#include "query/sortbyintegerfield.h"
#include "support/scopeddatalocation.h"
#include "support/syntheticcatalogue.h"
#include "support/testprovider.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFutureWatcher>
#include <QSignalSpy>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int largest = 50000; // packages of the catalogue that the models show

/// Indexes by their number of packages, made at first use. Lives in main(), inside the data
/// directory's life.
class Shared
{
public:
    Shared() { s_current = this; }

    /// Packages with a rank of their own in another order than the index's; 2 keywords to 5
    /// packages, 4 links to each.
    static MemoryCatalogue catalogue(int packages)
    {
        MemoryCatalogue catalogue =
            SyntheticCatalogue({packages, packages * 2 / 5, packages * 4}, 1).contents();
        for (int i = 0; i < catalogue.manifests.size(); ++i)
            catalogue.manifests[i].insert("rank", int(quint32(i) * 2654435761U % 1000003));
        return catalogue;
    }

    static QSharedPointer<PackageIndex> index(int packages)
    {
        QSharedPointer<PackageIndex> &index = s_current->m_indexes[packages];
        if (!index)
            index = buildIndex(catalogue(packages));
        return index;
    }

    static TestProvider &provider()
    {
        if (!s_current->m_provider) {
            s_current->m_provider = std::make_unique<TestProvider>();
            s_current->m_provider->source.catalogue = catalogue(largest);
            s_current->m_provider->publish();
        }
        return *s_current->m_provider;
    }

private:
    inline static Shared *s_current = nullptr;
    std::map<int, QSharedPointer<PackageIndex>> m_indexes;
    std::unique_ptr<TestProvider> m_provider;
};

/// Reports the failure of \a state's verification. True if \a isRight.
bool verify(benchmark::State &state, bool isRight)
{
    if (!isRight)
        state.SkipWithError("wrong answer");
    return isRight;
}

// Matchers: one selection over all packages.

bool hasWord(const PackageNode &node, const QString &word)
{
    const auto keywords = node.keywords();
    return std::any_of(keywords.begin(), keywords.end(), [&word](const KeywordNode *keyword) {
        return !keyword->matchingStrings(&word).isEmpty();
    });
}

void measureMatcher(
    benchmark::State &state, PackageMatcher &matcher,
    const std::function<bool(const PackageNode &)> &expected)
{
    const auto index = Shared::index(int(state.range(0)));
    const PackageList all = PackageIndex::selectPackages(index, {}, {}, {});
    const PackageList hits = PackageIndex::selectPackages(index, {}, matcher.matchFunction(), {});
    const auto isExpected = [&expected](const PackageNode *node) { return expected(*node); };
    const auto expectedCount = std::count_if(all.begin(), all.end(), isExpected);
    if (!verify(
            state, hits.size() > 0 && hits.size() == expectedCount
                       && std::all_of(hits.begin(), hits.end(), isExpected)))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            PackageIndex::selectPackages(index, {}, matcher.matchFunction(), {}));
    state.counters["hits"] = hits.size();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void matchKeyword(benchmark::State &state)
{
    HasKeyword matcher;
    matcher.setKeywordId("word-000001");
    measureMatcher(state, matcher, [](const PackageNode &node) {
        const auto keywords = node.keywords();
        return std::any_of(keywords.begin(), keywords.end(), [](const KeywordNode *keyword) {
            return keyword->id() == QLatin1String("word-000001");
        });
    });
}

void matchKeywordSearch(benchmark::State &state)
{
    MatchesKeywordSearch matcher;
    matcher.setSearchString("dor");
    measureMatcher(state, matcher, [](const PackageNode &node) { return hasWord(node, "dor"); });
}

void matchManifestField(benchmark::State &state)
{
    HasManifestField matcher;
    matcher.setName("rank");
    measureMatcher(
        state, matcher, [](const PackageNode &node) { return node.manifest().contains("rank"); });
}

void matchGroup(benchmark::State &state)
{
    HasManifestField field;
    field.setName("rank");
    MatchesKeywordSearch search;
    search.setSearchString("dor");
    PackageMatcherGroup group;
    group.addMatcher(&field);
    group.addMatcher(&search);
    measureMatcher(state, group, [](const PackageNode &node) { return hasWord(node, "dor"); });
}

void sortByInteger(benchmark::State &state)
{
    const auto index = Shared::index(int(state.range(0)));
    SortByIntegerField sorter;
    sorter.setName("rank");
    const PackageList sorted = PackageIndex::selectPackages(index, {}, {}, sorter.sortFunction());
    if (!verify(
            state,
            std::is_sorted(
                sorted.begin(), sorted.end(), [](const PackageNode *a, const PackageNode *b) {
                    return a->manifestValue("rank").toInt() < b->manifestValue("rank").toInt();
                })))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            PackageIndex::selectPackages(index, {}, {}, sorter.sortFunction()));
}

// The difference of two lists of rows.

using Rows = QVector<PackageNode *>;

Rows applied(Rows rows, const std::vector<RowChange> &changes)
{
    for (const RowChange &change : changes) {
        if (const auto *remove = std::get_if<RemoveRows>(&change)) {
            rows.remove(remove->first, remove->last - remove->first + 1);
        } else if (const auto *move = std::get_if<MoveRow>(&change)) {
            rows.move(move->from, move->to);
        } else {
            const auto &insert = std::get<InsertRows>(change);
            rows.insert(insert.first, insert.rows.size(), nullptr);
            std::copy(insert.rows.begin(), insert.rows.end(), rows.begin() + insert.first);
        }
    }
    return rows;
}

void measureDifference(benchmark::State &state, const Rows &shown, const Rows &wanted)
{
    const auto changes = rowChanges(shown, wanted);
    if (!verify(state, !changes || applied(shown, *changes) == wanted))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(rowChanges(shown, wanted));
    state.counters["edits"] = changes ? double(changes->size()) : 0;
    state.counters["stuck"] = !changes;
}

Rows allRows(const benchmark::State &state)
{
    return PackageIndex::selectPackages(Shared::index(int(state.range(0))), {}, {}, {}).packages();
}

void differenceOfReversed(benchmark::State &state)
{
    const Rows rows = allRows(state);
    Rows reversed = rows;
    std::reverse(reversed.begin(), reversed.end());
    measureDifference(state, rows, reversed);
}

/// An order without rhyme or reason ends, as a rule, where a row would have to go to the top.
void differenceOfShuffled(benchmark::State &state)
{
    const Rows rows = allRows(state);
    Rows shuffled = rows;
    std::shuffle(shuffled.begin(), shuffled.end(), QRandomGenerator(1));
    measureDifference(state, rows, shuffled);
}

/// Turned by half, the list takes the most moves of all: nearly two to a row.
void differenceOfTurned(benchmark::State &state)
{
    const Rows rows = allRows(state);
    Rows turned = rows;
    std::rotate(turned.begin(), turned.begin() + turned.size() / 2, turned.end());
    measureDifference(state, rows, turned);
}

/// Every second row: as many ranges as there can be.
Rows everySecond(const Rows &rows)
{
    Rows some;
    for (int i = 0; i < rows.size(); i += 2)
        some.append(rows.at(i));
    return some;
}

void differenceOfFilterOn(benchmark::State &state)
{
    const Rows rows = allRows(state);
    measureDifference(state, rows, everySecond(rows));
}

void differenceOfFilterOff(benchmark::State &state)
{
    const Rows rows = allRows(state);
    measureDifference(state, everySecond(rows), rows);
}

// The model: from a change to its rows, with all that lies between but the wait for further
// changes.

constexpr double debounce = 0.030; // seconds

/// Runs the event loop until \a model has taken a task's result. Seconds since the call.
double secondsToRows(PackageListModel &model)
{
    QElapsedTimer time;
    time.start();
    QSignalSpy finished(model.findChild<QFutureWatcherBase *>(), &QFutureWatcherBase::finished);
    while (finished.isEmpty())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return double(time.nsecsElapsed()) / 1e9;
}

/// Types a search letter by letter and clears it again, over 50,000 packages.
void keystrokeToRows(benchmark::State &state)
{
    PackageListModel model;
    MatchesKeywordSearch search;
    model.setMatcher(&search);
    model.setPackageProvider(&Shared::provider());
    secondsToRows(model);
    if (!verify(state, model.count() == largest))
        return;
    const QStringList typed{"d", "do", "dor", "dorf", ""};
    int next = 0;
    double longest = 0;
    for (auto _ : state) {
        search.setSearchString(typed.at(next));
        next = (next + 1) % typed.size();
        const double seconds = secondsToRows(model) - debounce;
        longest = std::max(longest, seconds);
        state.SetIterationTime(std::max(seconds, 0.0));
    }
    state.counters["longest_ms"] = longest * 1000;
}

/// Changes the sort order of 10,000 rows there and back.
void sortOrderToRows(benchmark::State &state)
{
    TestProvider provider;
    provider.source.catalogue = Shared::catalogue(10000);
    if (!verify(state, provider.publish()))
        return;
    PackageListModel model;
    model.setResetWhenStuck(true);
    SortByIntegerField sorter;
    sorter.setName("rank");
    model.setPackageProvider(&provider);
    secondsToRows(model);
    for (auto _ : state) {
        model.setSorter(model.sorter() ? nullptr : &sorter);
        state.SetIterationTime(std::max(secondsToRows(model) - debounce, 0.0));
    }
    model.setSorter(&sorter);
    secondsToRows(model);
    verify(state, model.count() == 10000);
}

/// What the model's own thread does with a task's edits, without any view.
void applyEdits(benchmark::State &state)
{
    const Rows rows = allRows(state);
    const auto off = rowChanges(everySecond(rows), rows);
    if (!verify(state, off && applied(everySecond(rows), *off) == rows))
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(applied(everySecond(rows), *off));
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);
}

BENCHMARK(matchKeyword)->Apply(sizes);
BENCHMARK(matchKeywordSearch)->Apply(sizes);
BENCHMARK(matchManifestField)->Apply(sizes);
BENCHMARK(matchGroup)->Apply(sizes);
BENCHMARK(sortByInteger)->Apply(sizes);
BENCHMARK(differenceOfReversed)->Apply(sizes);
BENCHMARK(differenceOfShuffled)->Apply(sizes);
BENCHMARK(differenceOfTurned)->Apply(sizes);
BENCHMARK(differenceOfFilterOn)->Apply(sizes);
BENCHMARK(differenceOfFilterOff)->Apply(sizes);
BENCHMARK(applyEdits)->Apply(sizes);
BENCHMARK(keystrokeToRows)
    ->UseManualTime()
    ->MeasureProcessCPUTime()
    ->Iterations(50)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(sortOrderToRows)
    ->UseManualTime()
    ->MeasureProcessCPUTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    ScopedDataLocation data;
    {
        Shared shared;
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv))
            return 1;
        benchmark::RunSpecifiedBenchmarks();
    }
    benchmark::Shutdown();
    return 0;
}

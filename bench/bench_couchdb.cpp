// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// What the GUI thread pays for a snapshot of a CouchDB source: getAccessor(), beside the load()
// that a worker does afterwards.
//
//   cmake --preset bench && ninja -C build/bench bench_couchdb && build/bench/bench/bench_couchdb

#include "repository/packageaccessor.h"
#include "sources/couchdbpackageaccessor.h"
#include "sources/couchdbpackagesource.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QCoreApplication>
#include <QUrl>

#include <benchmark/benchmark.h>

using namespace nk::pm;

namespace {

constexpr int packageCount = 6000;
const QUrl database(QStringLiteral("http://127.0.0.1:5984/catalogue"));

QByteArray view()
{
    QByteArray rows;
    for (int i = 0; i < packageCount; ++i) {
        rows += rows.isEmpty() ? "" : ",\n";
        rows +=
            R"({"id":"package:p)" + QByteArray::number(i)
            + R"(","key":["package"],"value":{"_id":"package:p)" + QByteArray::number(i)
            + R"(","_rev":"1-abc","packageType":"a:b","manifest":{"name":"Package","price":3}}})";
    }
    return "{\"total_rows\":1,\"offset\":0,\"rows\":[\n" + rows + "\n]}\n";
}

void getAccessor(benchmark::State &state)
{
    const test::ScopedDataLocation data;
    CouchDBPackageSource source(database, nullptr);
    const auto held = source.getAccessor(); // as the current index does
    for (auto _ : state)
        benchmark::DoNotOptimize(source.getAccessor());
}
BENCHMARK(getAccessor)->Unit(benchmark::kMicrosecond);

void load(benchmark::State &state)
{
    const test::ScopedDataLocation data;
    const QString path = data.filePath(QStringLiteral("view"));
    test::writeFile(path, view());
    for (auto _ : state) {
        CouchDBPackageAccessor accessor(path, database, nullptr);
        accessor.load();
        if (accessor.packageCount() != packageCount)
            state.SkipWithError("the view wasn't read");
    }
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}

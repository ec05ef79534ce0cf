// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "environment.h"
#include "fuzztarget.h"

#include <QTest>

#include <memory>

using namespace nk::pm::fuzz;

/// Keeps a fuzz target alive between the runs of its fuzzer: its seeds, and all that is left of
/// them when they are cut off somewhere.
class FuzzSeeds : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void survives_data();
    void survives();

private:
    static void runCut(const QByteArray &input, int size);

    const Environment m_environment;
};

void FuzzSeeds::survives_data()
{
    QTest::addColumn<QByteArray>("input");
    for (const Seed &seed : seeds())
        QTest::newRow(seed.name) << seed.input;
}

void FuzzSeeds::survives()
{
    QFETCH(QByteArray, input);
    constexpr int mostCuts = 250;
    const int step = std::max(1, input.size() / mostCuts);
    for (int size = input.size(); size >= 0; size -= step)
        runCut(input, size);
}

// On the heap and no byte longer, as a fuzzer's input is.
void FuzzSeeds::runCut(const QByteArray &input, int size)
{
    const auto bytes = std::make_unique<char[]>(size_t(size));
    std::copy_n(input.cbegin(), size, bytes.get());
    runOnce(QByteArray::fromRawData(bytes.get(), size));
}

QTEST_GUILESS_MAIN(FuzzSeeds)
#include "fuzzseeds.moc"

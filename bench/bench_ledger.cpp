// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// What reading a ledger costs beyond its signatures: loads a ledger of 50,000 packages beside as
// many bare verifications on the same cores, round by round in one run, so that other load meets
// all alike.

#include "sources/ledgerloader.h"
#include "sources/signedcontent.h"
#include "sources/verifiedsignatures.h"
#include "support/ledgerbuilder.h"

#include <QCoreApplication>
#include <QFile>
#include <QTextStream>
#include <QThread>

#include <sodium.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <malloc.h>
#include <thread>
#include <vector>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Milliseconds = std::chrono::duration<double, std::milli>;

[[noreturn]] void fail(const char *what)
{
    QTextStream(stderr) << what << Qt::endl;
    std::exit(1);
}

LedgerBuilder catalogue(int packages)
{
    LedgerBuilder builder;
    builder.addIssuer("bench", "issuer").addLanguage("en").addLanguage("de");
    for (int i = 0; i < packages / 10; ++i)
        builder.addKeyword(0, "keyword-" + QByteArray::number(i), {{0, {"word"}}, {1, {"Wort"}}});
    for (int i = 0; i < packages; ++i) {
        const QByteArray number = QByteArray::number(i);
        builder.addPackage(
            "package-" + number, "model:kind" + QByteArray::number(i % 50),
            "{\"type\":\"model\",\"name\":\"Package number " + number
                + "\",\"description\":\"id:package." + number + ".description\",\"size\":[" + number
                + ",240.5],\"thumbnail\":\"images/thumbnail.png\",\"public\":true,"
                  "\"materials\":{\"front\":\"oak\",\"back\":\"steel\"}}",
            {{"images/thumbnail.png", number}, {"model/geometry.bin", "g" + number}});
        builder.addLink(4, 0x01, quint32(i), quint32(i % (packages / 10)));
    }
    return builder;
}

struct BareSignature
{
    QByteArray signature;
    QByteArray message;
    QByteArray point;
};

std::vector<BareSignature> signaturesOf(const LedgerTables &tables)
{
    std::vector<BareSignature> signatures;
    for (const PackageEntry &package : tables.packages)
        signatures.push_back(
            {QByteArray(package.signature, 64),
             signedContent(package, tables.types.at(package.typeIndex)),
             tables.issuers.at(package.issuerIndex).publicKey.bytes().mid(12)});
    return signatures;
}

bool verify(const BareSignature &bare)
{
    const auto bytes = [](const QByteArray &array) {
        return reinterpret_cast<const unsigned char *>(array.constData());
    };
    return crypto_sign_ed25519_verify_detached(
               bytes(bare.signature), bytes(bare.message), quint64(bare.message.size()),
               bytes(bare.point))
           == 0;
}

// All of them on as many threads as there are cores, each taking the next hundred.
int verifyAll(const std::vector<BareSignature> &signatures)
{
    constexpr size_t batch = 100;
    std::atomic<size_t> next{0};
    std::atomic_int good{0};
    const auto work = [&] {
        for (size_t begin = next.fetch_add(batch); begin < signatures.size();
             begin = next.fetch_add(batch)) {
            for (size_t i = begin; i < std::min(begin + batch, signatures.size()); ++i)
                good += verify(signatures.at(i)) ? 1 : 0;
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < QThread::idealThreadCount(); ++i)
        threads.emplace_back(work);
    for (std::thread &thread : threads)
        thread.join();
    return good;
}

/// In milliseconds; the processor's sum over all threads, which other load doesn't change much.
struct Cost
{
    double wall = 0;
    double cpu = 0;
};

template<typename Function>
Cost measure(const Function &function)
{
    const std::clock_t cpu = std::clock();
    const auto wall = std::chrono::steady_clock::now();
    function();
    return {
        Milliseconds(std::chrono::steady_clock::now() - wall).count(),
        1000.0 * double(std::clock() - cpu) / CLOCKS_PER_SEC};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

// In kB, of this process; -1 where the system doesn't tell.
double processMemory(const QByteArray &field)
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(field.size()).simplified().split(' ').first().toDouble();
    }
    return -1;
}

void resetPeak()
{
#ifdef __GLIBC__
    malloc_trim(0); // what was freed before is not to be reused unseen
#endif
    QFile file("/proc/self/clear_refs");
    if (file.open(QIODevice::WriteOnly))
        file.write("5");
}

class Run
{
public:
    explicit Run(int packages);

    void round();
    void report() const;

private:
    int m_packages;
    QByteArray m_ledger;
    nk::crypto::ed25519::PublicKey m_trustKey;
    std::vector<BareSignature> m_signatures;
    double m_peak = 0;
    std::vector<Cost> m_bare;
    std::vector<Cost> m_cold;
    std::vector<Cost> m_warm;
};

Run::Run(int packages)
    : m_packages(packages)
{
    {
        const LedgerBuilder builder = catalogue(packages);
        m_ledger = builder.build();
        m_trustKey = builder.trustKey();
    }
    VerifiedSignatures known;
    resetPeak();
    const double before = processMemory("VmRSS:");
    const LedgerTables tables = loadLedger(m_ledger, m_trustKey, known);
    m_peak = processMemory("VmHWM:") - before;
    if (tables.packages.size() != packages)
        fail("The ledger is refused");
    m_signatures = signaturesOf(tables);
    if (verifyAll(m_signatures) != packages)
        fail("A bare signature is refused");
}

void Run::round()
{
    VerifiedSignatures known;
    LedgerTables first;
    LedgerTables second;
    m_bare.push_back(measure([this] { verifyAll(m_signatures); }));
    m_cold.push_back(measure([&] { first = loadLedger(m_ledger, m_trustKey, known); }));
    m_warm.push_back(measure([&] { second = loadLedger(m_ledger, m_trustKey, known); }));
    if (first.packages.size() != m_packages || second.packages.size() != m_packages)
        fail("The ledger is refused");
}

/// The median over the rounds of what \a figure makes of one.
template<typename Figure>
double medianOf(size_t rounds, const Figure &figure)
{
    std::vector<double> values;
    for (size_t i = 0; i < rounds; ++i)
        values.push_back(figure(i));
    return median(values);
}

void Run::report() const
{
    QTextStream out(stdout);
    out.setRealNumberNotation(QTextStream::FixedNotation);
    out.setRealNumberPrecision(2);
    const size_t rounds = m_bare.size();
    const auto line = [&](const char *name, const auto &figure) {
        out << name << medianOf(rounds, [&](size_t i) { return figure(i, &Cost::wall); }) << '\t'
            << medianOf(rounds, [&](size_t i) { return figure(i, &Cost::cpu); }) << '\n';
    };
    out << "packages " << m_packages << ", ledger " << double(m_ledger.size()) / (1024 * 1024)
        << " MiB, cores " << QThread::idealThreadCount() << ", rounds " << int(rounds)
        << "\npeak memory of a first load, beyond the ledger: " << m_peak / 1024 << " MiB\n"
        << "                       wall\tprocessor\n";
    line("bare verifications, ms ", [&](size_t i, auto time) { return m_bare[i].*time; });
    line("first load, ms         ", [&](size_t i, auto time) { return m_cold[i].*time; });
    line("unchanged load, ms     ", [&](size_t i, auto time) { return m_warm[i].*time; });
    line("first / bare           ", [&](size_t i, auto time) {
        return m_cold[i].*time / (m_bare[i].*time);
    });
    line("first / unchanged      ", [&](size_t i, auto time) {
        return m_cold[i].*time / (m_warm[i].*time);
    });
    out << "(wanted: first / bare at most 1.15, first / unchanged at least 10)" << Qt::endl;
}

} // namespace

// bench_ledger [packages [rounds]]
int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    Run run(std::max(10, arguments.value(1, "50000").toInt()));
    for (int i = 0; i < std::max(1, arguments.value(2, "7").toInt()); ++i)
        run.round();
    run.report();
    return 0;
}

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
#include "sources/couchdbsnapshots.h"
#include "sources/ledgerstore.h"
#include "support/ledgerbuilder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>
#include <sys/resource.h>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int fileSize = 100000;
constexpr int ledgerSize = 16000000; // large enough that a kill hits the middle of a write
constexpr int viewSize = 1024 * 1024;
constexpr int endless = 1000000;

/// A process that writes what is persisted.
class Worker : public QProcess
{
public:
    explicit Worker(const QStringList &arguments, rlim_t maxOpenFiles = 0)
        : m_maxOpenFiles(maxOpenFiles)
    {
        start(WORKER, arguments);
    }

    /// Waits until it has said so many lines.
    bool says(int lines)
    {
        while (m_output.count('\n') < lines && (waitForReadyRead(60000) || bytesAvailable() > 0))
            m_output += readAllStandardOutput();
        return m_output.count('\n') >= lines;
    }
    /// Kills it within so many milliseconds, between any two of its steps.
    bool killWithin(int milliseconds)
    {
        waitForReadyRead(milliseconds);
        kill();
        return state() == NotRunning || waitForFinished();
    }
    bool ended(int milliseconds) { return state() == NotRunning || waitForFinished(milliseconds); }
    bool endsWell() { return ended(120000) && exitStatus() == NormalExit && exitCode() == 0; }

private:
    void setupChildProcess() override
    {
        const rlimit limit{m_maxOpenFiles, m_maxOpenFiles};
        if (m_maxOpenFiles > 0)
            ::setrlimit(RLIMIT_NOFILE, &limit);
    }

    const rlim_t m_maxOpenFiles;
    QByteArray m_output;
};

QStringList storeOf(const ScopedDataLocation &data, int count)
{
    return {"store", data.path(), QString::number(count), QString::number(fileSize)};
}

QStringList ledgersOf(const ScopedDataLocation &data, const QString &name, int count)
{
    return {"ledger", data.path(), QString::number(count), QString::number(ledgerSize), name};
}

/// How many files stand under a final name; -1 if one of them isn't what its name says.
int wholeFiles(const ScopedDataLocation &data)
{
    int count = 0;
    for (const QString &path : filesBelow(data.filePath("packages/files"))) {
        const QString digest = path.section('/', -2).remove('/');
        if (!FileStore::isValidDigest(digest))
            continue; // a temporary file, which no lookup sees
        if (fileHash(readFile(path)).toHex() != digest)
            return -1;
        ++count;
    }
    return count;
}

/// The number of a whole ledger, whose content is that of its ETag; -1 for any other.
int numberOf(const LedgerSnapshot &snapshot)
{
    const int number = snapshot.etag.split('-').value(1, "-1").toInt();
    static const QByteArray contents[] = {
        numberedContent(0, ledgerSize), numberedContent(1, ledgerSize)};
    return number >= 0 && snapshot.ledger == contents[number % 2] ? number : -1;
}

} // namespace

/// What is persisted, across processes, which end in every way.
class ProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("norvak.packageserver=false"); }
    void killedProcessLeavesAWholeStore();
    void twoProcessesFillOneStore();
    void leavesDescriptorsForOthers();
    void unusableDirectoryIsFatal();
    void killedProcessLeavesAWholeLedger();
    void twoProcessesPersistOneLedger();
    void killedProcessLeavesWholeSnapshots();
};

void ProcessesTest::killedProcessLeavesAWholeStore()
{
    const int count = 40;
    for (const int committed : {-1, 0, 1, 5, 21}) { // as soon as it runs, with all downloads open
        ScopedDataLocation data;
        Worker killed(storeOf(data, count));
        QVERIFY(killed.waitForStarted());
        QVERIFY(killed.says(committed + 1));
        QVERIFY(killed.killWithin(QRandomGenerator::global()->bounded(3)));
        QVERIFY(wholeFiles(data) >= qMax(committed, 0));

        Worker restarted(storeOf(data, count));
        QVERIFY(restarted.endsWell());
        QCOMPARE(wholeFiles(data), count);
    }
}

void ProcessesTest::twoProcessesFillOneStore()
{
    const int count = 60;
    ScopedDataLocation data;
    Worker one(storeOf(data, count));
    Worker other(storeOf(data, count));
    QVERIFY(one.endsWell());
    QVERIFY(other.endsWell());
    QCOMPARE(wholeFiles(data), count);
}

void ProcessesTest::leavesDescriptorsForOthers()
{
    ScopedDataLocation data;
    Worker worker(storeOf(data, 300), 200);
    QVERIFY(worker.waitForFinished(120000));
    QCOMPARE(worker.exitStatus(), QProcess::NormalExit);
    QCOMPARE(worker.exitCode(), 1);
    QCOMPARE(
        worker.readAllStandardError().count("Too many open files for package storage file"), 1);
    QCOMPARE(wholeFiles(data), 0);
}

void ProcessesTest::unusableDirectoryIsFatal()
{
    for (const char *obstacle : {"packages", "packages/files"}) {
        ScopedDataLocation data;
        writeFile(data.filePath(obstacle), "in the way");
        Worker worker(storeOf(data, 1));
        QVERIFY(worker.waitForFinished(60000));
        QCOMPARE(worker.exitStatus(), QProcess::CrashExit);
        const QByteArray expected =
            "Failed to access writable location " + data.filePath("packages/files").toLocal8Bit();
        const QByteArray said = worker.readAllStandardError();
        QVERIFY2(said.startsWith(expected), said.constData());
    }
}

void ProcessesTest::killedProcessLeavesAWholeLedger()
{
    for (int round = 0; round < 15; ++round) {
        const int begun = round % 3;
        const ScopedDataLocation data;
        Worker killed(ledgersOf(data, "killed", endless));
        QVERIFY(killed.says(begun + 1));
        QVERIFY(killed.killWithin(2 * round));

        const LedgerStore store("shared");
        const LedgerSnapshot left = store.load();
        if (begun == 0 && left.etag.isEmpty())
            QCOMPARE(left.ledger, QByteArray());
        else
            QVERIFY2(numberOf(left) >= begun - 1, left.etag.constData());
        // Neither its lock nor its half-written file is in the way of the next.
        store.save({"next-7", numberedContent(1, ledgerSize)});
        QCOMPARE(numberOf(store.load()), 7);
        const QDir directory(data.filePath("packages/servers/shared"));
        QCOMPARE(directory.entryList(QDir::Files | QDir::Hidden), QStringList({"ledger"}));
    }
}

void ProcessesTest::twoProcessesPersistOneLedger()
{
    const ScopedDataLocation data;
    Worker one(ledgersOf(data, "one", 10));
    Worker other(ledgersOf(data, "other", 10));
    QVERIFY(one.says(2) && other.says(2));
    const LedgerStore store("shared");
    do {
        QVERIFY(numberOf(store.load()) >= 0);
    } while (!one.ended(0) || !other.ended(0));
    QVERIFY(one.endsWell() && other.endsWell());
    QCOMPARE(numberOf(store.load()), 9);
}

void ProcessesTest::killedProcessLeavesWholeSnapshots()
{
    for (int round = 0; round < 20; ++round) {
        const QTemporaryDir data;
        const QDir directory(data.path());
        Worker killed(
            {"snapshots", data.path(), QString::number(endless), QString::number(viewSize)});
        QVERIFY(killed.says(1));
        QVERIFY(killed.killWithin(round));

        for (const QString &name : directory.entryList(QDir::Files)) {
            const QByteArray content = readFile(directory.filePath(name));
            QVERIFY2(content == numberedContent(name.toInt() % 2, viewSize), qPrintable(name));
        }
        // The next process goes on, whatever this one has left.
        const CouchDBSnapshot snapshot = newestSnapshot(directory);
        QVERIFY(!snapshot.path.isEmpty());
        persistSnapshot(directory, {"\"next\"", snapshot.path});
        QCOMPARE(QFileInfo(directory.filePath("next")).size(), qint64(viewSize));
    }
}

QTEST_GUILESS_MAIN(ProcessesTest)

#include "tst_processes.moc"

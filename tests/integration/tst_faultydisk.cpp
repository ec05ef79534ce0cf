// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "support/testfiles.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QtConcurrent>
#include <QtTest>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace nk::pm::test;

using Tree = QMap<QString, QByteArray>; // path -> content
/// Whether a run that told a failure, or was killed, has left \a now of \a before and \a after.
using Rule = bool (*)(const Tree &now, const Tree &before, const Tree &after);

Q_DECLARE_METATYPE(Rule)

namespace {

constexpr int sampleSize = 4; // of a scenario's faults, each two runs of a program

/// The calls by which a program looks at files and changes them.
const char diskCalls[] = "%file,read,pread64,write,pwrite64,getdents64,fsync,fdatasync,syncfs,"
                         "fchmod,ftruncate,lseek,flock,utimensat,copy_file_range";

/// What of a directory somebody else may see: neither staging directories nor locks.
Tree visible(const QString &directory)
{
    Tree tree;
    static const QRegularExpression own("(^|/)\\.|\\.lock$");
    for (const QString &path : filesBelow(directory)) {
        const QString name = QDir(directory).relativeFilePath(path);
        if (!name.contains(own))
            tree.insert(name, readFile(path));
    }
    return tree;
}

Tree below(const Tree &tree, const QString &directory)
{
    Tree part;
    for (auto file = tree.begin(); file != tree.end(); ++file) {
        if (file.key().section('/', 0, -2) == directory)
            part.insert(file.key(), *file);
    }
    return part;
}

/// Each directory is as it was before or as it is to be.
bool packagesAreWhole(const Tree &now, const Tree &before, const Tree &after)
{
    const QStringList names = now.keys() + before.keys() + after.keys();
    return std::all_of(names.begin(), names.end(), [&](const QString &name) {
        const QString directory = name.section('/', 0, -2);
        const Tree part = below(now, directory);
        return part == below(before, directory) || part == below(after, directory);
    });
}

/// Nothing is gone, and whatever the ledger names is there.
bool publicationIsWhole(const Tree &now, const Tree &before, const Tree &after)
{
    const QString ledger = "api/v1/ledger/index.html";
    const Tree &state = now.value(ledger) == after.value(ledger) ? after : before;
    Tree files = now;
    for (auto file = state.begin(); file != state.end(); ++file) {
        if (files.take(file.key()) != *file)
            return false;
    }
    return std::all_of(files.keyBegin(), files.keyEnd(), [&](const QString &name) {
        return files.value(name) == before.value(name) || files.value(name) == after.value(name);
    });
}

/// The faults that the calls of a traced run below \a directory may meet, for strace:
/// "NAME:when=N:WHAT". Numbers are those of each thread, as strace counts them. The disk is full
/// only for what changes something; and to be killed at a call is to be killed at the one before,
/// unless that has.
QStringList faultsBelow(const QString &directory, const QString &log)
{
    QSet<QString> faults;
    QMap<QString, int> ordinals;
    bool hasChanged = true;
    static const QRegularExpression call("^(\\d+) +(\\w+)\\(");
    static const QRegularExpression changing(
        "write|rename|link|dir|sync|truncate|chmod|utimens|copy");
    for (const QString &line : QString::fromUtf8(readFile(log)).split('\n')) {
        const auto match = call.match(line);
        if (!match.hasMatch())
            continue;
        const QString name = match.captured(2);
        const int ordinal = ++ordinals[match.captured()];
        if (!line.contains(directory))
            continue;
        const QString when = QString("%1:when=%2:").arg(name).arg(ordinal);
        const bool changes = name.contains(changing) || line.contains("O_CREAT");
        faults += {when + "error=EIO", when + "error=EINTR"};
        if (changes)
            faults.insert(when + "error=ENOSPC");
        if (std::exchange(hasChanged, changes))
            faults.insert(when + "signal=KILL");
    }
    QStringList sorted = faults.values();
    sorted.sort();
    return sorted;
}

/// What a program is to do, in a directory that begins as a copy of "old".
struct Scenario
{
    QString target; // what of that directory it changes
    QStringList command;
    Rule isWhole;
    Tree before, after; // of the target

    /// Why what is in \a work is neither; empty if it is.
    QString complaint(const QString &work, bool isDone) const
    {
        const Tree now = visible(work + '/' + target);
        if (isDone ? now == after : isWhole(now, before, after))
            return {};
        return (isDone ? "not all is done: " : "something is lost: ") + now.keys().join(' ');
    }
};

CallResult run(const QString &work, const QStringList &command, const QStringList &tracing = {})
{
    const QStringList whole = tracing + command;
    // The search for leaks is itself a tracer.
    return call(whole.first(), whole.mid(1), work, {{"ASAN_OPTIONS", "detect_leaks=0"}});
}

} // namespace

/// Programs on a disk that fails at one call, or killed at it: either the failure is told and what
/// was there is whole, or all is done; and the next run is as if nothing had been.
///
/// A sample of the faults, all of them with the environment variable NKPM_HOSTILE.
class tst_FaultyDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void everyCallMayFail_data();
    void everyCallMayFail();
    /// Else no run has met its fault.
    void cleanupTestCase() { QVERIFY(m_told > 0); }

private:
    QString path(const QString &name) const { return m_root.filePath(name); }
    Scenario undisturbed(const QString &target, const QStringList &command, Rule isWhole) const;
    QString tryFault(const Scenario &scenario, const QString &fault);

    QTemporaryDir m_root;
    std::atomic<int> m_told{0}; // runs that failed or were killed
};

void tst_FaultyDisk::initTestCase()
{
    CatalogueTree tree;
    tree.package("things/ball", R"({"name": "Ball"})");
    tree.file("packages/things/ball/a.txt", "round");
    tree.file("packages/things/ball/b.txt", numberedContent(1, 300000));
    tree.package("things/box");
    tree.file("packages/things/box/c.txt", "square");
    tree.keyword("toy");
    tree.link("needs", "box", "requires", "ball");
    makeKeys(m_root.path(), Trust::DefaultPrograms);
    publishWithKeys(m_root.path(), tree.path(), "old/public");
    QVERIFY(QDir().mkpath(path("old/kept")));
    QCOMPARE(
        call(
            NKPM_PROGRAM, {"collection", path("old/kept/c.json"), "add", "ball", "--local",
                           tree.path(), "--data", path("data")})
            .exitCode,
        0);
    writeFile(path("old/replaced/things/ball/old.txt"), "old");
    writeFile(path("old/replaced/things/box/c.txt"), "old");
    tree.file("packages/things/ball/b.txt", numberedContent(2, 300000));
    tree.file("packages/things/box/d.txt", "new");
    QCOMPARE(call("cp", {"-a", tree.path(), path("catalogue")}).exitCode, 0);
}

void tst_FaultyDisk::everyCallMayFail_data()
{
    const QStringList sources{"--local", path("catalogue"), "--data", "data"};
    QTest::addColumn<QString>("target");
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<Rule>("isWhole");
    QTest::newRow("install") << "new"
                             << QStringList{NKPM_PROGRAM, "install", "box", "ball", "--into", "new"}
                                    + sources
                             << Rule(packagesAreWhole);
    QTest::newRow("replace") << "replaced"
                             << QStringList{NKPM_PROGRAM, "install",  "box",
                                            "--into",     "replaced", "--replace"}
                                    + sources
                             << Rule(packagesAreWhole);
    QTest::newRow("collection")
        << "kept" << QStringList{NKPM_PROGRAM, "collection", "kept/c.json", "add", "box"} + sources
        << Rule(packagesAreWhole);
    QTest::newRow("publish") << "public"
                             << QStringList{NKLEDGER,  "publish",        path("catalogue"),
                                            "public",  "--issuer",       path("studio-private.pem"),
                                            "--trust", path("trust.pem")}
                             << Rule(publicationIsWhole);
}

// Leaves "log", the calls.
Scenario tst_FaultyDisk::undisturbed(
    const QString &target, const QStringList &command, Rule isWhole) const
{
    const QString work = path("work");
    QDir(work).removeRecursively();
    call("cp", {"-a", path("old"), work});
    const Tree before = visible(work + '/' + target);
    const QStringList logging{
        "strace", "-f", "-qq", "-y", "-e", QString("trace=") + diskCalls, "-o", path("log")};
    const CallResult result = run(work, command, logging);
    if (result.exitCode != 0)
        qFatal("%s", qPrintable(result.errors));
    return {target, command, isWhole, before, visible(work + '/' + target)};
}

// On any thread; gives what is wrong with its outcome.
QString tst_FaultyDisk::tryFault(const Scenario &scenario, const QString &fault)
{
    const QTemporaryDir own(path("work-XXXXXX"));
    const QString work = own.filePath("work");
    call("cp", {"-a", path("old"), work});
    QStringList injecting{
        "strace",          "-f", "-qq",      "-e", "trace=" + fault.section(':', 0, 0), "-e",
        "inject=" + fault, "-o", "/dev/null"};
    if (!fault.contains("signal")) // which it can't send from its filters in the kernel
        injecting.append("--seccomp-bpf");
    const CallResult result = run(work, scenario.command, injecting);
    m_told += result.exitCode != 0;
    for (const char *bad : {"ERROR: AddressSanitizer", "runtime error:"}) {
        if (result.errors.contains(bad))
            return result.errors;
    }
    // A sanitizer's own writes to a pipe, of which it expects to fail otherwise, count for nothing.
    QString complaint;
    if (!result.errors.contains("SanitizerTool: CHECK failed"))
        complaint = scenario.complaint(work, result.exitCode == 0);
    if (!complaint.isEmpty())
        return QString("%1 (%2) %3").arg(complaint).arg(result.exitCode).arg(result.errors);
    // A lock that was being made as its program was killed: some seconds later.
    for (const QString &file : filesBelow(work)) {
        if (file.endsWith("lock"))
            makeOld(file, 60);
    }
    const CallResult again = run(work, scenario.command);
    return again.exitCode == 0 ? scenario.complaint(work, true) : "afterwards: " + again.errors;
}

void tst_FaultyDisk::everyCallMayFail()
{
    QFETCH(QString, target);
    QFETCH(QStringList, command);
    QFETCH(Rule, isWhole);
    const Scenario scenario = undisturbed(target, command, isWhole);
    QVERIFY(scenario.after != scenario.before);
    QStringList faults = faultsBelow(m_root.path(), path("log"));
    QVERIFY(faults.size() > 100);
    QRandomGenerator random(1);
    std::shuffle(faults.begin(), faults.end(), random);
    if (!qEnvironmentVariableIsSet("NKPM_HOSTILE"))
        faults = faults.mid(0, sampleSize);
    std::atomic<int> failed{0};
    QtConcurrent::blockingMap(faults, [&](const QString &fault) {
        const QString complaint = tryFault(scenario, fault);
        if (complaint.isEmpty())
            return;
        ++failed;
        qWarning("%s: %s", qPrintable(fault), qPrintable(complaint));
    });
    QCOMPARE(failed.load(), 0);
}

QTEST_GUILESS_MAIN(tst_FaultyDisk)
#include "tst_faultydisk.moc"

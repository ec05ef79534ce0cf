// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
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

/// A process that fills the store of a data directory.
class Filler : public QProcess
{
public:
    Filler(const QString &data, int count, rlim_t maxOpenFiles = 0)
        : m_maxOpenFiles(maxOpenFiles)
    {
        start(STOREFILLER, {data, QString::number(count), QString::number(fileSize)});
    }

    bool endsWell()
    {
        return waitForFinished(120000) && exitStatus() == NormalExit && exitCode() == 0;
    }

    /// Lines so far, once there are \a wanted.
    QList<QByteArray> lines(int wanted)
    {
        while (m_output.count('\n') < wanted && (waitForReadyRead(60000) || bytesAvailable() > 0))
            m_output += readAllStandardOutput();
        return m_output.split('\n').mid(0, wanted);
    }

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

} // namespace

/// The file store across processes, which end in every way.
class FileStoreProcessesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedProcessLeavesAWholeStore_data();
    void killedProcessLeavesAWholeStore();
    void twoProcessesFillOneStore();
    void leavesDescriptorsForOthers();
    void unusableDirectoryIsFatal_data();
    void unusableDirectoryIsFatal();

private:
    /// How many files stand under a final name; -1 if one of them isn't what its name says.
    static int wholeFiles(const ScopedDataLocation &data)
    {
        int count = 0;
        QDirIterator it(data.filePath("packages/files"), QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext()) {
            const QString path = it.next();
            const QString digest = QFileInfo(it.fileInfo().path()).fileName() + it.fileName();
            if (!FileStore::isValidDigest(digest))
                continue; // a temporary file, which no lookup sees
            const QByteArray found =
                QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha224);
            if (found.toHex() != digest.toLatin1())
                return -1;
            ++count;
        }
        return count;
    }
};

void FileStoreProcessesTest::killedProcessLeavesAWholeStore_data()
{
    QTest::addColumn<int>("committed");
    QTest::newRow("as soon as it runs") << -1;
    QTest::newRow("with all downloads open") << 0;
    for (int committed : {1, 5, 21})
        QTest::addRow("about to commit file %d", committed) << committed;
}

void FileStoreProcessesTest::killedProcessLeavesAWholeStore()
{
    QFETCH(int, committed);
    const int count = 40;
    ScopedDataLocation data;
    Filler killed(data.path(), count);
    QVERIFY(killed.waitForStarted());
    QCOMPARE(killed.lines(committed + 1).size(), committed + 1);
    // Somewhere between this line and the next ones.
    killed.waitForReadyRead(QRandomGenerator::global()->bounded(3));
    killed.kill();
    QVERIFY(killed.waitForFinished());
    const int whole = wholeFiles(data);
    QVERIFY(whole >= qMax(committed, 0));

    Filler restarted(data.path(), count);
    QVERIFY(restarted.endsWell());
    QCOMPARE(wholeFiles(data), count);
}

void FileStoreProcessesTest::twoProcessesFillOneStore()
{
    const int count = 60;
    ScopedDataLocation data;
    Filler one(data.path(), count);
    Filler other(data.path(), count);
    QVERIFY(one.endsWell());
    QVERIFY(other.endsWell());
    QCOMPARE(wholeFiles(data), count);
}

void FileStoreProcessesTest::leavesDescriptorsForOthers()
{
    ScopedDataLocation data;
    Filler filler(data.path(), 300, 200);
    QVERIFY(filler.waitForFinished(120000));
    QCOMPARE(filler.exitStatus(), QProcess::NormalExit);
    QCOMPARE(filler.exitCode(), 1);
    QCOMPARE(
        filler.readAllStandardError().count("Too many open files for package storage file"), 1);
    QCOMPARE(wholeFiles(data), 0);
}

void FileStoreProcessesTest::unusableDirectoryIsFatal_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::newRow("packages") << "packages";
    QTest::newRow("files") << "packages/files";
}

void FileStoreProcessesTest::unusableDirectoryIsFatal()
{
    QFETCH(QString, obstacle);
    ScopedDataLocation data;
    writeFile(data.filePath(obstacle), "in the way");
    Filler filler(data.path(), 1);
    QVERIFY(filler.waitForFinished(60000));
    QCOMPARE(filler.exitStatus(), QProcess::CrashExit);
    const QByteArray expected =
        "Failed to access writable location " + data.filePath("packages/files").toLocal8Bit();
    const QByteArray said = filler.readAllStandardError();
    QVERIFY2(said.startsWith(expected), said.constData());
}

QTEST_GUILESS_MAIN(FileStoreProcessesTest)

#include "tst_filestoreprocesses.moc"

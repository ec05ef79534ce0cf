// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/couchdbsnapshots.h"
#include "support/testfiles.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::pm;

/// Processes that persist snapshots and are killed in the middle.
class TestCouchDBProcesses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void killedProcessLeavesWholeSnapshots();
};

void TestCouchDBProcesses::killedProcessLeavesWholeSnapshots()
{
    QTemporaryDir directory;
    QRandomGenerator random(4711);
    for (int round = 0; round < 20; ++round) {
        QProcess process;
        process.start(SNAPSHOTPERSISTER, {directory.path()});
        QVERIFY(process.waitForStarted());
        QVERIFY(process.waitForReadyRead(60000)); // it is at work
        QTest::qWait(random.bounded(30));
        process.kill();
        QVERIFY(process.waitForFinished());

        QDirIterator files(directory.path(), QDir::Files);
        while (files.hasNext()) {
            const QByteArray content = test::readFile(files.next());
            const char letter = char('a' + files.fileName().toInt() % 26);
            QVERIFY2(content == QByteArray(1024 * 1024, letter), qPrintable(files.fileName()));
        }
        // The next process goes on, whatever this one has left.
        const CouchDBSnapshot snapshot = newestSnapshot(QDir(directory.path()));
        QVERIFY(!snapshot.path.isEmpty());
        const QString next = QString("\"next-%1\"").arg(round);
        persistSnapshot(QDir(directory.path()), {next, snapshot.path});
        QCOMPARE(
            QFileInfo(directory.filePath(QString("next-%1").arg(round))).size(),
            qint64(1024 * 1024));
        for (const QString &name : QDir(directory.path()).entryList(QDir::Files))
            QVERIFY(QFile::remove(directory.filePath(name))); // the next one begins anew
    }
}

QTEST_GUILESS_MAIN(TestCouchDBProcesses)
#include "tst_couchdbprocesses.moc"

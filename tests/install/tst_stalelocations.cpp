// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installlocationroot.h"
#include "install/stalelocations.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// What the sweep of install roots takes away, and what it leaves.
class StaleLocationsTest : public QObject
{
    Q_OBJECT

private:
    static QDateTime afterSeconds(qint64 seconds)
    {
        return QDateTime::currentDateTimeUtc().addSecs(seconds);
    }
    static QString makeRoot(const ScopedDataLocation &data, const QString &name)
    {
        const QString path = data.filePath("packages/install/" + name);
        writeFile(path + "/type/id/file", "content");
        return path;
    }

private Q_SLOTS:
    void unlockedRootsGoAfter300Seconds();
    void liveRootsStay();
    void rootOfADeadProcessGoes();
    void symbolicLinksAreNotFollowed();
    void overlappingSweepsRemoveEverything();
};

void StaleLocationsTest::unlockedRootsGoAfter300Seconds()
{
    ScopedDataLocation data;
    const QFileInfo root(makeRoot(data, "root"));
    const QDateTime created =
        root.birthTime().isValid() ? root.birthTime() : root.metadataChangeTime();
    QVERIFY(created.isValid());
    LogRecorder log("norvak.package.install");
    for (const int age : {-1000, 0, 300, 301}) {
        sweepLocations(installRoots(), created.addSecs(age));
        QVERIFY2(QFileInfo::exists(root.filePath()) == (age <= 300), QByteArray::number(age));
    }
    QCOMPARE(
        log.lines(),
        QStringList("debug: Removing stale install location \"" + root.filePath() + '"'));
    QVERIFY(QFileInfo::exists(installRoots()));
}

void StaleLocationsTest::liveRootsStay()
{
    ScopedDataLocation data;
    const InstallLocation root = InstallLocationRoot::createLocation();
    QThreadPool::globalInstance()->waitForDone();
    // A lock file from long ago isn't a stale one.
    QFile lock(root.directory(false).filePath(".lock"));
    QVERIFY(lock.open(QIODevice::ReadWrite));
    const QDateTime hoursAgo = QDateTime::currentDateTime().addSecs(-3600 * 10);
    QVERIFY(lock.setFileTime(hoursAgo, QFileDevice::FileModificationTime));
    lock.close();

    sweepLocations(installRoots(), afterSeconds(100000));
    QVERIFY(root.directory(false).exists());
    QVERIFY(QFileInfo::exists(lock.fileName()));
}

void StaleLocationsTest::rootOfADeadProcessGoes()
{
    ScopedDataLocation data;
    const QString path = makeRoot(data, "dead");
    {
        QLockFile lock(path + "/.lock");
        QVERIFY(lock.tryLock());
        const QByteArray left = readFile(path + "/.lock");
        lock.unlock();
        QProcess process;
        process.start("true", QStringList());
        QVERIFY(process.waitForStarted());
        const QByteArray deadPid = QByteArray::number(process.processId());
        QVERIFY(process.waitForFinished());
        writeFile(path + "/.lock", deadPid + left.mid(left.indexOf('\n')));
    }
    sweepLocations(installRoots(), afterSeconds(302));
    QVERIFY(!QFileInfo::exists(path));
}

void StaleLocationsTest::symbolicLinksAreNotFollowed()
{
    ScopedDataLocation data;
    QTemporaryDir outside;
    writeFile(outside.filePath("precious"), "content");
    makeLink(data.filePath("packages/install/link"), outside.path());
    const QString path = makeRoot(data, "old");
    makeLink(path + "/inner", outside.path());

    sweepLocations(installRoots(), afterSeconds(302));
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QFileInfo::exists(outside.filePath("precious")));
    QVERIFY(!QFileInfo::exists(outside.filePath(".lock")));
}

void StaleLocationsTest::overlappingSweepsRemoveEverything()
{
    ScopedDataLocation data;
    for (int i = 0; i < 30; ++i)
        makeRoot(data, QString::number(i));
    const InstallLocation live = InstallLocationRoot::createLocation();
    QVERIFY(live.installFile(data.filePath("packages/install/0/type/id/file"), "kept"));

    QThreadPool pool;
    pool.setMaxThreadCount(4);
    for (int i = 0; i < 4; ++i)
        QtConcurrent::run(&pool, [] { sweepLocations(installRoots(), afterSeconds(302)); });
    pool.waitForDone();
    // Where two runs were in one directory the first may have left it to the other.
    sweepLocations(installRoots(), afterSeconds(302));
    QCOMPARE(
        QDir(installRoots()).entryList(QDir::Dirs | QDir::NoDotAndDotDot),
        QStringList{live.directory(false).dirName()});
    QVERIFY(live.contains("kept"));
}

QTEST_GUILESS_MAIN(StaleLocationsTest)
#include "tst_stalelocations.moc"

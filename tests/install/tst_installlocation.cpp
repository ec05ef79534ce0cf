// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filecopy.h"
#include "install/installlocationroot.h"
#include "install/installpath.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QTemporaryDir>
#include <QtConcurrent>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// Where files lie down: links, copies, first come first served, and never outside.
class InstallLocationTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;
    QTemporaryDir m_sources;

    QString source(const QString &name, const QByteArray &content = "content")
    {
        writeFile(m_sources.filePath(name), content);
        return m_sources.filePath(name);
    }
    static QStringList entries(const QDir &directory)
    {
        return directory.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    QStringList everythingOnDisk() const
    {
        QStringList paths;
        for (QDirIterator it(
                 m_data.path(), QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot,
                 QDirIterator::Subdirectories);
             it.hasNext();)
            paths << it.next();
        paths.sort();
        return paths;
    }

private Q_SLOTS:
    void invalidLocationTouchesNothing();
    void rootIsFreshNamedAndLocked();
    void rootThatCannotBeMadeRefusesFiles();
    void sharedRootStaysLockedUntilItsLastLocation();
    void subLocationsJoinByTheirTemplate();
    void hostileNamesAreRefused();
    void symbolicLinksThatLeaveAreRefused();
    void filesAreLinkedOnce();
    void symbolicSourceIsInstalledAsItsContent();
    void unusableSourceLeavesNothing();
    void otherVolumeIsCopied();
    void copyLeavesAnExistingTarget();
    void failedCopyLeavesNothing();
    void manyThreadsInstallTheSameFiles();
};

void InstallLocationTest::invalidLocationTouchesNothing()
{
    const InstallLocation location;
    QVERIFY(!location.subLocation("a").isValid());
    QVERIFY(!location.contains("a"));
    QCOMPARE(location.pathToFile("a"), QString());
    QCOMPARE(location.directory(true), QDir(QString()));
    QVERIFY(!location.installFile(source("a"), "a"));
    QCOMPARE(everythingOnDisk(), QStringList());
}

void InstallLocationTest::rootIsFreshNamedAndLocked()
{
    const InstallLocation first = InstallLocationRoot::createLocation();
    const InstallLocation second = InstallLocationRoot::createLocation();
    const QDir directory = first.directory(false);
    QVERIFY(directory.exists());
    QVERIFY(directory != second.directory(false));
    const QRegularExpression name("^[A-Za-z0-9_-]{11}$");
    QVERIFY2(directory.dirName().contains(name), qPrintable(directory.dirName()));
    QCOMPARE(directory.absolutePath(), m_data.filePath("packages/install/" + directory.dirName()));
    QVERIFY(!QLockFile(directory.filePath(".lock")).tryLock(0));
}

void InstallLocationTest::rootThatCannotBeMadeRefusesFiles()
{
    ScopedDataLocation broken;
    writeFile(broken.filePath("packages/install"), "a file in the way");
    QTest::ignoreMessage(QtCriticalMsg, "Failed to create package install location");
    const InstallLocation root = InstallLocationRoot::createLocation();
    QVERIFY(root.isValid());

    const InstallLocation location = root.subLocation("a");
    const QString path = location.directory(false).absolutePath();
    const QString message = "Failed to create package install location \"" + path + "\"";
    QTest::ignoreMessage(QtCriticalMsg, qPrintable(message));
    QVERIFY(!location.installFile(source("a"), "a"));
}

void InstallLocationTest::sharedRootStaysLockedUntilItsLastLocation()
{
    InstallLocation root = InstallLocationRoot::createLocation();
    InstallLocation below = root.subLocation("a").subLocation("b");
    const QDir directory = root.directory(false);
    const auto isLocked = [&] { return !QLockFile(directory.filePath(".lock")).tryLock(0); };

    root = InstallLocation();
    QVERIFY(isLocked());
    const InstallLocation last = std::move(below);
    QVERIFY(isLocked());
    below = last;
    const_cast<InstallLocation &>(last) = InstallLocation();
    QVERIFY(isLocked());
    below = InstallLocation();
    QVERIFY(!isLocked());
    QVERIFY(directory.exists());
}

void InstallLocationTest::subLocationsJoinByTheirTemplate()
{
    const InstallLocation root = InstallLocationRoot::createLocation();
    const QString rootPath = root.directory(false).absolutePath();
    const auto pathOf = [](const InstallLocation &location) {
        return location.directory(false).absolutePath();
    };
    QCOMPARE(pathOf(root.subLocation("a").subLocation("b/c")), rootPath + "/a/b/c");
    QCOMPARE(pathOf(root.subLocation("/id")), rootPath + "/id"); // a package without a type
    QCOMPARE(pathOf(root.subLocation("%1/%2")), rootPath + "/%1/%2");
    QCOMPARE(pathOf(root.subLocation("a/../b")), rootPath + "/b");
    QVERIFY(root.subLocation("a/../b").directory(true).exists());

    QVERIFY(root.subLocation("x").installFile(source("f", "shared"), "f"));
    QCOMPARE(readFile(root.subLocation("x").pathToFile("f")), QByteArray("shared"));
}

void InstallLocationTest::hostileNamesAreRefused()
{
    const InstallLocation root = InstallLocationRoot::createLocation();
    const InstallLocation location = root.subLocation("type/id");
    writeFile(root.directory(false).filePath("type/victim"), "victim");
    location.directory(true);
    QThreadPool::globalInstance()->waitForDone();
    const QString from = source("hostile");
    const QStringList before = everythingOnDisk();
    for (const QString &name :
         {QString(), QString("."), QString(".."), QString("../victim"),
          QString("../../../../../../../../tmp/x"), QString("a/../../victim"),
          m_sources.filePath("absolute"), QString("//victim"), QString("/"),
          QString("a") + QChar(0) + "b", QString("..") + QChar(0)}) {
        QVERIFY2(!location.installFile(from, name), qPrintable(name));
        QVERIFY2(!location.contains(name), qPrintable(name));
        QCOMPARE(location.pathToFile(name), QString());
    }
    QCOMPARE(everythingOnDisk(), before);
    QVERIFY(!QFileInfo::exists(m_sources.filePath("absolute")));

    for (const QString &name :
         {QString(".."), QString("../../.."), QString("x/../../victim"), QString("/../x"),
          QString("a") + QChar(0)}) {
        QVERIFY2(!root.subLocation(name).isValid(), qPrintable(name));
        QVERIFY2(!root.subLocation("type").subLocation(name).isValid(), qPrintable(name));
    }
}

void InstallLocationTest::symbolicLinksThatLeaveAreRefused()
{
    const InstallLocation root = InstallLocationRoot::createLocation();
    const QString rootPath = root.directory(false).absolutePath();
    QTemporaryDir outside;
    writeFile(outside.filePath("secret"), "secret");
    makeLink(rootPath + "/door", outside.path());
    makeLink(rootPath + "/file/secret", outside.filePath("secret"));
    makeLink(rootPath + "/file/dangling", outside.filePath("nowhere"));
    writeFile(rootPath + "/real/inside", "inside");
    makeLink(rootPath + "/alias", rootPath + "/real");

    const InstallLocation door = root.subLocation("door");
    QCOMPARE(door.directory(true), QDir(QString()));
    QVERIFY(!door.contains("secret"));
    QVERIFY(!door.installFile(source("s"), "s"));
    QVERIFY(!root.subLocation("door/below").installFile(source("s"), "s"));
    QCOMPARE(entries(outside.path()), QStringList{"secret"});
    const InstallLocation file = root.subLocation("file");
    QVERIFY(!file.contains("secret"));
    QVERIFY(!file.installFile(source("s"), "secret"));
    QVERIFY(!file.installFile(source("s"), "dangling"));
    QVERIFY(!QFileInfo::exists(outside.filePath("nowhere")));

    QVERIFY(root.subLocation("alias").contains("inside"));
}

void InstallLocationTest::filesAreLinkedOnce()
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    const QString from = source("linked");
    QVERIFY(!location.contains("f"));
    QVERIFY(location.installFile(from, "f"));
    QVERIFY(location.contains("f"));
    // One file with two names: what is written through one is read through the other.
    writeFile(from, "changed");
    QCOMPARE(readFile(location.pathToFile("f")), QByteArray("changed"));
    // The first file wins.
    QVERIFY(location.installFile(source("second", "second"), "f"));
    QVERIFY(location.installFile(m_sources.filePath("missing"), "f"));
    QCOMPARE(readFile(location.pathToFile("f")), QByteArray("changed"));

    QVERIFY(!location.installFile(from, "sub/f")); // no directory is made for a slash
    QVERIFY(location.directory(false).mkdir("sub"));
    QVERIFY(location.installFile(from, "sub/f"));
    QVERIFY(location.contains("sub/f"));
}

void InstallLocationTest::symbolicSourceIsInstalledAsItsContent()
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    source("real", "real content");
    const QString link = m_sources.filePath("link");
    makeLink(link, m_sources.filePath("real"));
    QVERIFY(location.installFile(link, "f"));
    const QString path = location.pathToFile("f");
    QVERIFY(!QFileInfo(path).isSymLink());
    QCOMPARE(readFile(path), QByteArray("real content"));

    QFile::remove(path);
    QVERIFY(copyFile(link, path));
    QVERIFY(!QFileInfo(path).isSymLink());
}

void InstallLocationTest::unusableSourceLeavesNothing()
{
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("directory");
    makeLink(directory.filePath("dangling"), directory.filePath("nowhere"));
    makeLink(directory.filePath("device"), "/dev/zero");
    QCOMPARE(QProcess::execute("mkfifo", {directory.filePath("pipe")}), 0);
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    for (const char *name : {"missing", "directory", "dangling", "device", "pipe"})
        QVERIFY2(!location.installFile(directory.filePath(name), "f"), name);
    QVERIFY(!location.directory(false).exists());
}

void InstallLocationTest::otherVolumeIsCopied()
{
    if (otherVolume().isEmpty())
        QSKIP("This machine has one volume only");
    QTemporaryDir far(otherVolume() + "/source-XXXXXX");
    const QString from = far.filePath("tool");
    const QByteArray content(3 * 1024 * 1024 + 7, 'x');
    writeFile(from, content);
    QFile::setPermissions(from, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    QVERIFY(location.installFile(from, "tool"));
    const QString path = location.pathToFile("tool");
    QCOMPARE(readFile(path), content);
    QVERIFY(QFileInfo(path).isExecutable());
    QCOMPARE(entries(location.directory(false)), QStringList{"tool"});
}

void InstallLocationTest::copyLeavesAnExistingTarget()
{
    QTemporaryDir directory;
    writeFile(directory.filePath("target"), "first");
    QVERIFY(!copyFile(source("late", "second"), directory.filePath("target")));
    QVERIFY(!hardLink(source("late", "second"), directory.filePath("target")));
    QCOMPARE(readFile(directory.filePath("target")), QByteArray("first"));
    QCOMPARE(entries(directory.path()), QStringList{"target"});
}

void InstallLocationTest::failedCopyLeavesNothing()
{
    if (!QFileInfo::exists("/proc/self/mem"))
        QSKIP("No file here that can be opened and not read");
    QTemporaryDir directory;
    QVERIFY(!copyFile("/proc/self/mem", directory.filePath("f")));
    QVERIFY(!copyFile(source("f"), directory.filePath("missing/f")));
    QCOMPARE(entries(directory.path()), QStringList());
}

void InstallLocationTest::manyThreadsInstallTheSameFiles()
{
    const int fileCount = 20;
    QTemporaryDir far(otherVolume() + "/source-XXXXXX");
    for (int i = 0; i < fileCount; ++i)
        writeFile(far.filePath(QString::number(i)), QByteArray(100000, char('a' + i)));
    const InstallLocation root = InstallLocationRoot::createLocation();

    QThreadPool pool;
    pool.setMaxThreadCount(8);
    QVector<QFuture<int>> results;
    for (int thread = 0; thread < 8; ++thread) {
        results << QtConcurrent::run(&pool, [&far, root] {
            int installed = 0;
            const InstallLocation location = root.subLocation("deep/type/id");
            for (int i = 0; i < fileCount; ++i) {
                const QString name = QString::number(i);
                const bool done =
                    location.installFile(far.filePath(name), name) && location.contains(name)
                    && readFile(location.pathToFile(name)) == QByteArray(100000, char('a' + i));
                installed += done ? 1 : 0;
            }
            return installed;
        });
    }
    for (const QFuture<int> &result : qAsConst(results))
        QCOMPARE(result.result(), fileCount);
    QCOMPARE(entries(root.subLocation("deep/type/id").directory(false)).size(), fileCount);
}

QTEST_GUILESS_MAIN(InstallLocationTest)
#include "tst_installlocation.moc"

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
    void hostileNamesAreRefused_data();
    void hostileNamesAreRefused();
    void hostileSubLocationsAreInvalid_data();
    void hostileSubLocationsAreInvalid();
    void symbolicLinksThatLeaveAreRefused();
    void filesAreLinked();
    void firstFileWins();
    void slashNeedsItsDirectory();
    void symbolicSourceIsInstalledAsItsContent();
    void unusableSourceLeavesNothing_data();
    void unusableSourceLeavesNothing();
    void otherVolumeIsCopied();
    void copyLeavesAnExistingTarget();
    void failedCopyLeavesNothing();
    void manyThreadsInstallTheSameFiles();
};

void InstallLocationTest::invalidLocationTouchesNothing()
{
    const InstallLocation location;
    QVERIFY(!location.isValid());
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
    QCOMPARE(pathOf(root.subLocation("furniture/chairs/oak")), rootPath + "/furniture/chairs/oak");
    QCOMPARE(pathOf(root.subLocation("a").subLocation("b")), rootPath + "/a/b");
    // The directory of a package without a type.
    QCOMPARE(pathOf(root.subLocation("/id")), rootPath + "/id");
    QCOMPARE(pathOf(root.subLocation("%1/%2")), rootPath + "/%1/%2");
    QCOMPARE(pathOf(root.subLocation("a/../b")), rootPath + "/b");
    QVERIFY(root.subLocation("a/../b").directory(true).exists());

    QVERIFY(root.subLocation("x").installFile(source("f", "shared"), "f"));
    QCOMPARE(readFile(root.subLocation("x").pathToFile("f")), QByteArray("shared"));
}

void InstallLocationTest::hostileNamesAreRefused_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("empty") << "";
    QTest::newRow("itself") << ".";
    QTest::newRow("parent") << "..";
    QTest::newRow("sibling") << "../victim";
    QTest::newRow("far up") << "../../../../../../../../tmp/x";
    QTest::newRow("up after down") << "a/../../victim";
    QTest::newRow("absolute") << m_sources.filePath("absolute");
    QTest::newRow("two slashes") << "//victim";
    QTest::newRow("slash") << "/";
    QTest::newRow("NUL") << QString("a") + QChar(0) + "b";
    QTest::newRow("hidden behind NUL") << QString("..") + QChar(0);
}

void InstallLocationTest::hostileNamesAreRefused()
{
    QFETCH(QString, name);
    const InstallLocation root = InstallLocationRoot::createLocation();
    const InstallLocation location = root.subLocation("type/id");
    writeFile(root.directory(false).filePath("type/victim"), "victim");
    location.directory(true);
    QThreadPool::globalInstance()->waitForDone();
    const QString from = source("hostile");
    const QStringList before = everythingOnDisk();

    QVERIFY(!location.installFile(from, name));
    QVERIFY(!location.contains(name));
    QCOMPARE(location.pathToFile(name), QString());
    QCOMPARE(everythingOnDisk(), before);
    QVERIFY(!QFileInfo::exists(m_sources.filePath("absolute")));
}

void InstallLocationTest::hostileSubLocationsAreInvalid_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("parent") << "..";
    QTest::newRow("far up") << "../../..";
    QTest::newRow("up after down") << "x/../../victim";
    QTest::newRow("up behind an empty type") << "/../x";
    QTest::newRow("NUL") << QString("a") + QChar(0);
}

void InstallLocationTest::hostileSubLocationsAreInvalid()
{
    QFETCH(QString, name);
    const InstallLocation root = InstallLocationRoot::createLocation();
    QVERIFY(!root.subLocation(name).isValid());
    QVERIFY(!root.subLocation("type").subLocation(name).isValid());
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
    QCOMPARE(QDir(outside.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size(), 1);

    const InstallLocation file = root.subLocation("file");
    QVERIFY(!file.contains("secret"));
    QVERIFY(!file.installFile(source("s"), "secret"));
    QVERIFY(!file.installFile(source("s"), "dangling"));
    QVERIFY(!QFileInfo::exists(outside.filePath("nowhere")));

    QVERIFY(root.subLocation("alias").contains("inside"));
}

void InstallLocationTest::filesAreLinked()
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    const QString from = source("linked");
    QVERIFY(!location.contains("b"));
    QVERIFY(location.installFile(from, "b"));
    QVERIFY(location.contains("b"));
    const QString path = location.pathToFile("b");
    QVERIFY(QDir::isAbsolutePath(path));

    // One file with two names: what is written through one is read through the other.
    writeFile(from, "changed");
    QCOMPARE(readFile(path), QByteArray("changed"));
}

void InstallLocationTest::firstFileWins()
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    QVERIFY(location.installFile(source("one", "first"), "f"));
    QVERIFY(location.installFile(source("two", "second"), "f"));
    QVERIFY(location.installFile(m_sources.filePath("missing"), "f"));
    QCOMPARE(readFile(location.pathToFile("f")), QByteArray("first"));
}

void InstallLocationTest::slashNeedsItsDirectory()
{
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    QVERIFY(!location.installFile(source("f"), "sub/f"));
    QVERIFY(location.directory(false).mkdir("sub"));
    QVERIFY(location.installFile(source("f"), "sub/f"));
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

    QFile::remove(location.pathToFile("f"));
    QVERIFY(copyFile(link, path));
    QVERIFY(!QFileInfo(path).isSymLink());
}

void InstallLocationTest::unusableSourceLeavesNothing_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << "missing";
    QTest::newRow("directory") << "directory";
    QTest::newRow("dangling link") << "dangling";
    QTest::newRow("pipe") << "pipe";
    QTest::newRow("link to a device") << "device";
}

void InstallLocationTest::unusableSourceLeavesNothing()
{
    QFETCH(QString, name);
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("directory");
    makeLink(directory.filePath("dangling"), directory.filePath("nowhere"));
    makeLink(directory.filePath("device"), "/dev/zero");
    QCOMPARE(QProcess::execute("mkfifo", {directory.filePath("pipe")}), 0);

    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    QVERIFY(!location.installFile(directory.filePath(name), "f"));
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
    QCOMPARE(
        location.directory(false).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{"tool"});
}

void InstallLocationTest::copyLeavesAnExistingTarget()
{
    QTemporaryDir directory;
    writeFile(directory.filePath("target"), "first");
    QVERIFY(!copyFile(source("late", "second"), directory.filePath("target")));
    QVERIFY(!hardLink(source("late", "second"), directory.filePath("target")));
    QCOMPARE(readFile(directory.filePath("target")), QByteArray("first"));
    QCOMPARE(
        QDir(directory.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{"target"});
}

void InstallLocationTest::failedCopyLeavesNothing()
{
    if (!QFileInfo::exists("/proc/self/mem"))
        QSKIP("No file here that can be opened and not read");
    QTemporaryDir directory;
    QVERIFY(!copyFile("/proc/self/mem", directory.filePath("f")));
    QVERIFY(!copyFile(source("f"), directory.filePath("missing/f")));
    QVERIFY(QDir(directory.path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
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
    QCOMPARE(
        root.subLocation("deep/type/id")
            .directory(false)
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
            .size(),
        fileCount);
}

QTEST_GUILESS_MAIN(InstallLocationTest)
#include "tst_installlocation.moc"

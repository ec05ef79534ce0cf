// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installlocationroot.h"
#include "install/localpackageinstaller.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// From a directory of files to an install location, on the thread pool.
class LocalPackageInstallerTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    void installsFilesButTheManifest();
    void manifestAloneCreatesNoDirectory();
    void missingDirectorySucceeds();
    void reportsEachFileThatFails();
    void invalidLocationFails();
    void mayBeDestroyedAtWork();
};

void LocalPackageInstallerTest::installsFilesButTheManifest()
{
    QTemporaryDir source;
    writeFile(source.filePath("manifest.json"), "{}");
    writeFile(source.filePath("Manifest.json"), "in capitals");
    writeFile(source.filePath("model %1.obj"), "mesh");
    writeFile(source.filePath("sub/inner"), "not entered");
    makeLink(source.filePath("linked"), source.filePath("sub/inner"));
    writeFile(source.filePath("stands"), "new");
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    writeFile(location.directory(true).filePath("stands"), "old");

    LocalPackageInstaller installer(source.path(), location);
    QCOMPARE(installer.status(), PackageInstaller::InProgress);
    QSignalSpy spy(&installer, &PackageInstaller::statusChanged);
    QTRY_COMPARE(installer.status(), PackageInstaller::Succeeded);
    QCOMPARE(spy.count(), 1);
    QStringList files =
        location.directory(false).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    files.sort();
    QCOMPARE(files, (QStringList{"Manifest.json", "linked", "model %1.obj", "stands"}));
    QCOMPARE(readFile(location.pathToFile("linked")), QByteArray("not entered"));
    QCOMPARE(readFile(location.pathToFile("stands")), QByteArray("old"));
}

void LocalPackageInstallerTest::manifestAloneCreatesNoDirectory()
{
    QTemporaryDir source;
    writeFile(source.filePath("manifest.json"), "{}");
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    LocalPackageInstaller installer(source.path(), location);
    QTRY_COMPARE(installer.status(), PackageInstaller::Succeeded);
    QVERIFY(!location.directory(false).exists());
}

void LocalPackageInstallerTest::missingDirectorySucceeds()
{
    LocalPackageInstaller installer(QDir("/nowhere/at/all"), InstallLocationRoot::createLocation());
    QTRY_COMPARE(installer.status(), PackageInstaller::Succeeded);
    QVERIFY(installer.errors().isEmpty());
}

void LocalPackageInstallerTest::reportsEachFileThatFails()
{
    QTemporaryDir source;
    writeFile(source.filePath("blocked one"), "1");
    writeFile(source.filePath("blocked two"), "2");
    const InstallLocation root = InstallLocationRoot::createLocation();
    const InstallLocation location = root.subLocation("blocked/id");
    writeFile(root.directory(false).filePath("blocked"), "a file where a directory belongs");
    const QString message = "Failed to create package install location \""
                            + location.directory(false).absolutePath() + "\"";
    QTest::ignoreMessage(QtCriticalMsg, qPrintable(message));
    QTest::ignoreMessage(QtCriticalMsg, qPrintable(message));

    LocalPackageInstaller installer(source.path(), location);
    QTRY_COMPARE(installer.status(), PackageInstaller::Failed);
    QStringList errors;
    for (const InstallError &error : installer.errors()) {
        QCOMPARE(error.code, 1);
        errors << error.message;
    }
    errors.sort();
    QCOMPARE(
        errors, (QStringList{
                    "Failed to install file " + source.filePath("blocked one"),
                    "Failed to install file " + source.filePath("blocked two")}));
}

void LocalPackageInstallerTest::invalidLocationFails()
{
    QTemporaryDir source;
    writeFile(source.filePath("file"), "content");
    LocalPackageInstaller installer(source.path(), InstallLocation());
    QTRY_COMPARE(installer.status(), PackageInstaller::Failed);
    QCOMPARE(installer.errors().size(), 1);
}

void LocalPackageInstallerTest::mayBeDestroyedAtWork()
{
    QTemporaryDir source;
    for (int i = 0; i < 200; ++i)
        writeFile(source.filePath(QString::number(i)), "content");
    const InstallLocation root = InstallLocationRoot::createLocation();
    for (int i = 0; i < 20; ++i) {
        const InstallLocation location = root.subLocation(QString::number(i));
        LocalPackageInstaller installer(source.path(), location);
        if (i % 2)
            QTRY_VERIFY(location.directory(false).exists());
    }
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::processEvents();
    // What was begun runs to its end on its own copies.
    QCOMPARE(root.subLocation("1").directory(false).entryList(QDir::Files).size(), 200);
}

QTEST_GUILESS_MAIN(LocalPackageInstallerTest)
#include "tst_localpackageinstaller.moc"

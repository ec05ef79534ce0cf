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
    void nothingToInstall();
    void reportsEachFileThatFails();
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

void LocalPackageInstallerTest::nothingToInstall()
{
    QTemporaryDir source;
    writeFile(source.filePath("manifest.json"), "{}");
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("t/id");
    for (const QString &directory : {source.path(), QString("/nowhere/at/all")}) {
        LocalPackageInstaller installer(directory, location);
        QTRY_COMPARE(installer.status(), PackageInstaller::Succeeded);
        QVERIFY(!location.directory(false).exists());
    }
}

void LocalPackageInstallerTest::reportsEachFileThatFails()
{
    QTemporaryDir source;
    writeFile(source.filePath("one"), "1");
    writeFile(source.filePath("two"), "2");
    LocalPackageInstaller installer(source.path(), InstallLocation());
    QTRY_COMPARE(installer.status(), PackageInstaller::Failed);
    QStringList errors;
    for (const InstallError &error : installer.errors())
        errors << QString::number(error.code) + ' ' + error.message;
    errors.sort();
    const QString text = "1 Failed to install file ";
    QCOMPARE(errors, (QStringList{text + source.filePath("one"), text + source.filePath("two")}));
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

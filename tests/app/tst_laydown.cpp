// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "filecopy.h"
#include "laydown.h"

#include "support/filesizelimit.h"
#include "support/testfiles.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace nk::pm::cli;
using nk::pm::test::readFile;
using nk::pm::test::writeFile;

/// All packages or none, whatever stands in the way.
class tst_LayDown : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void pathsStayBelow_data();
    void pathsStayBelow();
    void laysDownAndLeavesNothingElse();
    void anUncommittedRunLeavesNoTrace();
    void aCancelledCopyLeavesNoTrace();
    void equalFilesStay();
    void otherFilesAreReplacedOnlyOnRequest();
    void aFailedCommitTakesEverythingBack();
    void packageAndTypeMayShareADirectory();
    void linksShareTheFile();
    void sweepsWhatAKilledProcessLeft();
    void oneProcessAtATime();
    void saysWhyThereIsNoRoom();
    void saysWhatStandsInTheWay_data();
    void saysWhatStandsInTheWay();

private:
    QString target(const QString &name = {}) const { return m_root->filePath("into" + name); }
    /// Everything below the target directory, hidden files too, sorted.
    QStringList tree() const;
    LaidPackage package(const QString &path, const QByteArray &content = "content");
    /// Stages and commits; the first fault, if any.
    QString layDown(QVector<LaidPackage> packages, bool replace = false);

    QScopedPointer<QTemporaryDir> m_root;
    const std::atomic<bool> m_goOn{false};
};

void tst_LayDown::init()
{
    m_root.reset(new QTemporaryDir);
}

QStringList tst_LayDown::tree() const
{
    QStringList result;
    QDirIterator it(
        target(), QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        if (!it.fileInfo().isDir() || QDir(path).isEmpty())
            result.append(QDir(target()).relativeFilePath(path));
    }
    result.sort();
    return result;
}

LaidPackage tst_LayDown::package(const QString &path, const QByteArray &content)
{
    const QString source = m_root->filePath("source/" + path);
    writeFile(source + "/a.txt", content);
    writeFile(source + "/.hidden", "dot");
    return {path, QDir(source)};
}

QString tst_LayDown::layDown(QVector<LaidPackage> packages, bool replace)
{
    LayDown layDown(target());
    QString fault = layDown.open();
    for (int i = 0; i < packages.size() && fault.isEmpty(); ++i)
        fault = layDown.stage(packages[i], LayDown::Copy, replace, m_goOn);
    return fault.isEmpty() ? layDown.commit(packages) : fault;
}

void tst_LayDown::pathsStayBelow_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("path");
    QTest::newRow("levels become directories") << "a:b"
                                               << "c"
                                               << "a/b/c";
    QTest::newRow("no type") << ""
                             << "c"
                             << "c";
    QTest::newRow("dots inside a name") << "a..b"
                                        << "c.d"
                                        << "a..b/c.d";
    QTest::newRow("parent as identifier") << "a"
                                          << ".."
                                          << "";
    QTest::newRow("parent in the type") << "a:..:..:etc"
                                        << "c"
                                        << "";
    QTest::newRow("separator in the identifier") << "a"
                                                 << "../../c"
                                                 << "";
    QTest::newRow("absolute type") << "/etc"
                                   << "c"
                                   << "";
    QTest::newRow("empty level") << "a::b"
                                 << "c"
                                 << "";
    QTest::newRow("empty identifier") << "a"
                                      << ""
                                      << "";
    QTest::newRow("NUL") << "a" << QString::fromLatin1("c\0d", 3) << "";
    QTest::newRow("the staging directory") << ".nkpm-staging"
                                           << "c"
                                           << "";
}

void tst_LayDown::pathsStayBelow()
{
    QFETCH(QString, type);
    QFETCH(QString, id);
    QTEST(relativePackagePath(type, id), "path");
}

void tst_LayDown::laysDownAndLeavesNothingElse()
{
    QCOMPARE(layDown({package("t/one"), package("t/u/two")}), QString());
    QCOMPARE(
        tree(), (QStringList{"t/one/.hidden", "t/one/a.txt", "t/u/two/.hidden", "t/u/two/a.txt"}));
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("content"));
}

void tst_LayDown::anUncommittedRunLeavesNoTrace()
{
    {
        LayDown layDown(target("/deep/er"));
        QCOMPARE(layDown.open(), QString());
        auto one = package("t/one");
        QCOMPARE(layDown.stage(one, LayDown::Copy, false, m_goOn), QString());
        QCOMPARE(one.bytes, 10);
    }
    QVERIFY(!QFileInfo::exists(target()));
}

void tst_LayDown::aCancelledCopyLeavesNoTrace()
{
    writeFile(target("/mine.txt"), "mine");
    {
        LayDown layDown(target());
        QCOMPARE(layDown.open(), QString());
        const std::atomic<bool> cancelled{true};
        auto one = package("t/one");
        QVERIFY(!layDown.stage(one, LayDown::Copy, false, cancelled).isEmpty());
    }
    QCOMPARE(tree(), QStringList{"mine.txt"});
}

void tst_LayDown::equalFilesStay()
{
    QCOMPARE(layDown({package("t/one")}), QString());
    struct stat before = {}, after = {};
    QCOMPARE(stat(qPrintable(target("/t/one/a.txt")), &before), 0);
    QCOMPARE(layDown({package("t/one")}), QString());
    QCOMPARE(stat(qPrintable(target("/t/one/a.txt")), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino);
}

void tst_LayDown::otherFilesAreReplacedOnlyOnRequest()
{
    writeFile(target("/t/one/a.txt"), "mine!!!");
    writeFile(target("/t/one/more.txt"), "mine");
    QVERIFY(layDown({package("t/one")}).contains("t/one holds other files"));
    QCOMPARE(tree(), (QStringList{"t/one/a.txt", "t/one/more.txt"}));
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("mine!!!"));
    QCOMPARE(layDown({package("t/one")}, true), QString());
    QCOMPARE(tree(), (QStringList{"t/one/.hidden", "t/one/a.txt"}));
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("content"));
}

void tst_LayDown::aFailedCommitTakesEverythingBack()
{
    writeFile(target("/t/old/a.txt"), "old");
    QVector<LaidPackage> packages{package("t/new"), package("t/old"), package("u/blocked")};
    LayDown layDown(target());
    QCOMPARE(layDown.open(), QString());
    for (auto &each : packages)
        QCOMPARE(layDown.stage(each, LayDown::Copy, true, m_goOn), QString());
    writeFile(target("/u"), "a file where a directory has to be");
    QVERIFY(layDown.commit(packages).contains("u/blocked"));
    QCOMPARE(readFile(target("/t/old/a.txt")), QByteArray("old"));
    QVERIFY(!QFileInfo::exists(target("/t/new")));
}

void tst_LayDown::packageAndTypeMayShareADirectory()
{
    QCOMPARE(layDown({package("t/u/two"), package("t/u")}), QString());
    QCOMPARE(tree(), (QStringList{"t/u/.hidden", "t/u/a.txt", "t/u/two/.hidden", "t/u/two/a.txt"}));
    // What stands below can't go along with a replacement.
    QVERIFY(layDown({package("t/u", "changed")}, true).contains("can't be replaced"));
    QCOMPARE(readFile(target("/t/u/two/a.txt")), QByteArray("content"));
}

void tst_LayDown::linksShareTheFile()
{
    auto one = package("t/one");
    LayDown layDown(target());
    QCOMPARE(layDown.open(), QString());
    QCOMPARE(layDown.stage(one, LayDown::Link, false, m_goOn), QString());
    QCOMPARE(layDown.commit({one}), QString());
    struct stat source = {}, laid = {};
    QCOMPARE(stat(qPrintable(one.source.filePath("a.txt")), &source), 0);
    QCOMPARE(stat(qPrintable(target("/t/one/a.txt")), &laid), 0);
    QCOMPARE(laid.st_ino, source.st_ino);
}

void tst_LayDown::sweepsWhatAKilledProcessLeft()
{
    writeFile(target("/.nkpm-staging/0/half.bin"), "half");
    writeFile(
        target("/.nkpm.lock"), "999999999\nnkpm\n" + QSysInfo::machineHostName().toUtf8() + "\n");
    QCOMPARE(layDown({package("t/one")}), QString());
    QCOMPARE(tree(), (QStringList{"t/one/.hidden", "t/one/a.txt"}));
}

void tst_LayDown::oneProcessAtATime()
{
    auto one = package("t/one");
    LayDown first(target());
    QCOMPARE(first.open(), QString());
    QCOMPARE(first.stage(one, LayDown::Copy, false, m_goOn), QString());
    QVERIFY(layDown({package("t/two")}).contains("another nkpm"));
    QCOMPARE(first.commit({one}), QString());
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("content"));
}

void tst_LayDown::saysWhyThereIsNoRoom()
{
    QTemporaryDir directory;
    const QString from = directory.filePath("from"), to = directory.filePath("to");
    nk::pm::test::writeFile(from, nk::pm::test::numberedContent(1, 20000));
    const nk::pm::test::FileSizeLimit limit(10000);
    QCOMPARE(copyFile(from, to, m_goOn), to + ": " + qt_error_string(EFBIG));
}

void tst_LayDown::saysWhatStandsInTheWay_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("fault");
    QTest::newRow("a file for the directory") << ""
                                              << "into is not a directory";
    QTest::newRow("a file for a type") << "/t"
                                       << "can't put";
    QTest::newRow("a file for a package") << "/t/one"
                                          << "can't put";
}

void tst_LayDown::saysWhatStandsInTheWay()
{
    QFETCH(QString, file);
    QFETCH(QString, fault);
    writeFile(target(file), "in the way");
    const QString said = layDown({package("t/one")});
    QVERIFY2(said.contains(fault), qPrintable(said));
    QCOMPARE(readFile(target(file)), QByteArray("in the way"));
}

QTEST_GUILESS_MAIN(tst_LayDown)
#include "tst_laydown.moc"

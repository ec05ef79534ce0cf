// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "filecopy.h"
#include "laydown.h"

#include "support/columns.h"
#include "support/filesizelimit.h"
#include "support/testfiles.h"

#include <QDirIterator>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

using namespace nk::pm::cli;
using namespace nk::pm::test;

/// All packages or none, whatever stands in the way.
class tst_LayDown : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_root.reset(new QTemporaryDir); }
    void pathsStayBelow_data();
    void pathsStayBelow();
    void laysDownAndLeavesNothingElse();
    void anUncommittedRunLeavesNoTrace();
    void otherFilesAreReplacedOnlyOnRequest();
    void aFailedCommitTakesEverythingBack();
    void packageAndTypeMayShareADirectory();
    void whatStandsBelowIsntReplaced();
    void linksShareTheFile();
    void takesNoDamagedFile_data();
    void takesNoDamagedFile();
    void oneProcessAtATime();
    void anEmptyLockIsNobodysAfterSomeSeconds();
    void takesThePackagesOwnFilesOnly();
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

    static ino_t fileNumber(const QString &path)
    {
        struct stat status = {};
        return ::stat(qPrintable(path), &status) == 0 ? status.st_ino : 0;
    }

    QScopedPointer<QTemporaryDir> m_root;
    const std::atomic<bool> m_goOn{false};
};

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
    return {path, QDir(source), {".hidden", "a.txt"}};
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
    Columns<QString, QString, QString>("type", "id", "path")
        .row("levels become directories", "a:b", "c", "a/b/c")
        .row("no type", "", "c", "c")
        .row("dots inside a name", "a..b", "c.d", "a..b/c.d")
        .row("parent as identifier", "a", "..", "")
        .row("parent in the type", "a:..:..:etc", "c", "")
        .row("separator in the identifier", "a", "../../c", "")
        .row("absolute type", "/etc", "c", "")
        .row("empty level", "a::b", "c", "")
        .row("empty identifier", "a", "", "")
        .row("NUL", "a", QString::fromLatin1("c\0d", 3), "")
        .row("the staging directory", ".nkpm-staging", "c", "");
}

void tst_LayDown::pathsStayBelow()
{
    QFETCH(QString, type);
    QFETCH(QString, id);
    QTEST(relativePackagePath(type, id), "path");
}

void tst_LayDown::laysDownAndLeavesNothingElse()
{
    const QStringList all{"t/one/.hidden", "t/one/a.txt", "t/u/two/.hidden", "t/u/two/a.txt"};
    QCOMPARE(layDown({package("t/one"), package("t/u/two")}), QString());
    QCOMPARE(tree(), all);
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("content"));
    // The second time equal files stay.
    const ino_t first = fileNumber(target("/t/one/a.txt"));
    QCOMPARE(layDown({package("t/one")}), QString());
    QCOMPARE(tree(), all);
    QCOMPARE(fileNumber(target("/t/one/a.txt")), first);
}

void tst_LayDown::anUncommittedRunLeavesNoTrace()
{
    writeFile(target("/mine.txt"), "mine");
    {
        LayDown layDown(target("/deep/er"));
        QCOMPARE(layDown.open(), QString());
        auto one = package("t/one"), two = package("t/two");
        QCOMPARE(layDown.stage(one, LayDown::Copy, false, m_goOn), QString());
        QCOMPARE(one.bytes, 10);
        const std::atomic<bool> cancelled{true};
        QVERIFY(!layDown.stage(two, LayDown::Copy, false, cancelled).isEmpty());
    }
    QCOMPARE(tree(), QStringList{"mine.txt"});
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
    // A file that came after the judgement stays.
    QVERIFY(QFile::remove(target("/t/u/a.txt")) && QFile::remove(target("/t/u/.hidden")));
    auto late = package("t/u");
    {
        LayDown run(target());
        QCOMPARE(run.open(), QString());
        QCOMPARE(run.stage(late, LayDown::Copy, true, m_goOn), QString());
        writeFile(target("/t/u/a.txt"), "mine");
        QVERIFY(run.commit({late}).contains("can't put"));
    }
    QCOMPARE(tree(), (QStringList{"t/u/a.txt", "t/u/two/.hidden", "t/u/two/a.txt"}));
    QCOMPARE(readFile(target("/t/u/a.txt")), QByteArray("mine"));
}

void tst_LayDown::whatStandsBelowIsntReplaced()
{
    QCOMPARE(layDown({package("t/u/two"), package("t/u")}), QString());
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
    QCOMPARE(fileNumber(target("/t/one/a.txt")), fileNumber(one.source.filePath("a.txt")));
}

void tst_LayDown::takesNoDamagedFile_data()
{
    const auto hex = [](QCryptographicHash::Algorithm algorithm) {
        return QString(QCryptographicHash::hash("content", algorithm).toHex());
    };
    const QString signedOnes = hex(QCryptographicHash::Sha224);
    Columns<QString, bool, QByteArray>("digest", "isLinked", "standing")
        .row("copy", signedOnes, false, {})
        .row("copy of an attachment", hex(QCryptographicHash::Md5), false, {})
        .row("link", signedOnes, true, {})
        .row("the damaged one stands there", signedOnes, false, "c0ntent")
        .row("the good one stands there", signedOnes, false, "content");
}

void tst_LayDown::takesNoDamagedFile()
{
    QFETCH(QString, digest);
    QFETCH(bool, isLinked);
    QFETCH(QByteArray, standing);
    const auto mode = isLinked ? LayDown::Link : LayDown::Copy;
    auto one = package("t/one", "c0ntent");
    one.digests.insert("a.txt", digest);
    if (!standing.isEmpty()) {
        writeFile(target("/t/one/a.txt"), standing);
        writeFile(target("/t/one/.hidden"), "dot");
    }
    {
        LayDown layDown(target());
        QCOMPARE(layDown.open(), QString());
        const QString fault = layDown.stage(one, mode, true, m_goOn);
        QVERIFY2(fault.contains("\"a.txt\" of t/one"), qPrintable(fault));
        QVERIFY(fault.contains("nkpm store repair"));
        const QString file = one.source.filePath("a.txt");
        QVERIFY(QFile::remove(file));
        writeFile(file, "content");
        QVERIFY(QFile::setPermissions(file, QFile::ReadOwner));
        QCOMPARE(layDown.stage(one, mode, true, m_goOn), QString());
        QCOMPARE(layDown.commit({one}), QString());
    }
    QCOMPARE(readFile(target("/t/one/a.txt")), QByteArray("content"));
    const auto permissions = QFile::permissions(target("/t/one/a.txt"));
    QCOMPARE(permissions.testFlag(QFile::WriteOwner), !isLinked);
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

void tst_LayDown::anEmptyLockIsNobodysAfterSomeSeconds()
{
    const QString lock = target("/.nkpm.lock");
    writeFile(lock, "");
    QVERIFY(layDown({package("t/one")}).contains(lock));
    makeOld(lock, 10);
    QCOMPARE(layDown({package("t/one")}), QString());
    QCOMPARE(tree(), (QStringList{"t/one/.hidden", "t/one/a.txt"}));
}

void tst_LayDown::takesThePackagesOwnFilesOnly()
{
    auto one = package("t/one");
    writeFile(one.source.filePath("stranger"), "x");
    QCOMPARE(layDown({one}), QString());
    QCOMPARE(tree(), (QStringList{"t/one/.hidden", "t/one/a.txt"}));
    for (const char *name : {"missing", "../one/a.txt"}) {
        one.files = QStringList{name};
        QVERIFY(layDown({one}, true).contains(name));
    }
    QCOMPARE(tree(), (QStringList{"t/one/.hidden", "t/one/a.txt"}));
}

void tst_LayDown::saysWhyThereIsNoRoom()
{
    QTemporaryDir directory;
    const QString from = directory.filePath("from"), to = directory.filePath("to");
    writeFile(from, numberedContent(1, 20000));
    const FileSizeLimit limit(10000);
    ContentCheck check({});
    QCOMPARE(copyFile(from, to, check, m_goOn), to + ": " + qt_error_string(EFBIG));
}

void tst_LayDown::saysWhatStandsInTheWay_data()
{
    Columns<QString, QString>("file", "fault")
        .row("a file for the directory", "", "into is not a directory")
        .row("a file for a type", "/t", "can't read")
        .row("a file for a package", "/t/one", "can't read");
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

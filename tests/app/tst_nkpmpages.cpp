// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"
#include "support/toolpages.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace nk::pm::test;

/// The man pages and completions of nkpm and norvak-catalogue say what the programs' own help says.
class tst_NkpmPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpIsThere();
    void pagesFollowTheHelp_data();
    void pagesFollowTheHelp();
    void bashCompletes_data();
    void bashCompletes();
    void cataloguePagesFollowTheHelp_data();
    void cataloguePagesFollowTheHelp();

private:
    const ToolPages m_pages{NKPM_PROGRAM, true};
    const ToolPages m_cataloguePages{NKPM_CATALOGUE, false};
};

void tst_NkpmPages::helpIsThere()
{
    QCOMPARE(
        m_pages.commands(),
        QStringList({"list", "show", "file", "keywords", "install", "collection", "sources"}));
    QCOMPARE(m_pages.badHelp(), QStringList());
    QVERIFY(m_pages.options().contains("--into"));
}

void tst_NkpmPages::pagesFollowTheHelp_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("man page") << "man/nkpm.1";
    QTest::newRow("bash") << "completions/nkpm.bash";
    QTest::newRow("zsh") << "completions/_nkpm";
}

void tst_NkpmPages::pagesFollowTheHelp()
{
    QFETCH(QString, name);
    QCOMPARE(m_pages.missingIn(name), QStringList());
    QCOMPARE(m_pages.unknownIn(name), QStringList());
}

void tst_NkpmPages::bashCompletes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("expected");
    QTest::newRow("command") << QStringList{"so"} << "sources";
    QTest::newRow("source") << QStringList{"--local", "ca"} << "catalogue";
    QTest::newRow("command behind a source")
        << QStringList{"--json", "--local", "catalogue", "in"} << "install";
    QTest::newRow("source called like a command")
        << QStringList{"--local", "list", "key"} << "keywords";
    QTest::newRow("options of a command") << QStringList{"keywords", "--ca"} << "--categories";
    QTest::newRow("what to do with a collection")
        << QStringList{"--json", "collection", "room.json", "re"} << "remove";
    QTest::newRow("collection") << QStringList{"collection", "card"} << "cards.txt";
    QTest::newRow("options of an action")
        << QStringList{"collection", "room.json", "install", "--i"} << "--into";
    QTest::newRow("directory") << QStringList{"install", "chair", "--into", "ca"} << "catalogue";
    QTest::newRow("nothing for a package") << QStringList{"show", "ca"} << "";
}

void tst_NkpmPages::bashCompletes()
{
    QFETCH(QStringList, words);
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("catalogue");
    writeFile(directory.filePath("cards.txt"), "");
    QTEST(bashCompletions("nkpm", words, directory.path()), "expected");
}

void tst_NkpmPages::cataloguePagesFollowTheHelp_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("man page") << "man/norvak-catalogue.1";
    QTest::newRow("bash") << "completions/norvak-catalogue.bash";
    QTest::newRow("zsh") << "completions/_norvak-catalogue";
}

void tst_NkpmPages::cataloguePagesFollowTheHelp()
{
    QFETCH(QString, name);
    QVERIFY(m_cataloguePages.options().contains("--screenshot"));
    QCOMPARE(m_cataloguePages.missingIn(name), QStringList());
    QCOMPARE(m_cataloguePages.unknownIn(name), QStringList());
}

QTEST_GUILESS_MAIN(tst_NkpmPages)
#include "tst_nkpmpages.moc"

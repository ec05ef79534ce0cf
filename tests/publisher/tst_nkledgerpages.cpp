// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"
#include "support/toolpages.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace nk::pm::test;

/// The man page and the completions say what the program's own help says.
class tst_NkledgerPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void helpIsThere();
    void pagesFollowTheHelp_data();
    void pagesFollowTheHelp();
    void bashCompletes_data();
    void bashCompletes();

private:
    const ToolPages m_pages{NKLEDGER, true};
};

void tst_NkledgerPages::helpIsThere()
{
    QCOMPARE(m_pages.commands().size(), 11);
    QCOMPARE(m_pages.badHelp(), QStringList());
    QVERIFY(m_pages.options().contains("--server-name"));
}

void tst_NkledgerPages::pagesFollowTheHelp_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("man page") << "man/nkledger.1";
    QTest::newRow("bash") << "completions/nkledger.bash";
    QTest::newRow("zsh") << "completions/_nkledger";
}

void tst_NkledgerPages::pagesFollowTheHelp()
{
    QFETCH(QString, name);
    QCOMPARE(m_pages.missingIn(name), QStringList());
    QCOMPARE(m_pages.unknownIn(name), QStringList());
}

void tst_NkledgerPages::bashCompletes_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("expected");
    QTest::newRow("command") << QStringList{"pu"} << "publish";
    QTest::newRow("two commands") << QStringList{"i"} << "issue inspect";
    QTest::newRow("command behind an option") << QStringList{"--json", "ser"} << "serve";
    QTest::newRow("options of a command")
        << QStringList{"publish", "--"} << "--json --help --issuer --trust";
    QTest::newRow("directory") << QStringList{"publish", "ca"} << "catalogue";
    QTest::newRow("file for an option")
        << QStringList{"publish", "--issuer", "st"} << "studio-private.pem";
    QTest::newRow("nothing for a port") << QStringList{"serve", "--port", ""} << "";
}

void tst_NkledgerPages::bashCompletes()
{
    QFETCH(QStringList, words);
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("catalogue");
    writeFile(directory.filePath("cards.txt"), "");
    writeFile(directory.filePath("studio-private.pem"), "");
    QTEST(bashCompletions("nkledger", words, directory.path()), "expected");
}

QTEST_GUILESS_MAIN(tst_NkledgerPages)
#include "tst_nkledgerpages.moc"

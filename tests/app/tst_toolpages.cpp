// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/columns.h"
#include "support/testfiles.h"
#include "support/toolpages.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace nk::pm::test;

/// The man pages and completions of the programs say what their own help says.
class tst_ToolPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pagesFollowTheHelp_data();
    void pagesFollowTheHelp();
    void bashCompletes_data();
    void bashCompletes();
};

void tst_ToolPages::pagesFollowTheHelp_data()
{
    Columns<QString, QString, int>("program", "name", "commands")
        .row("nkpm", NKPM_PROGRAM, "nkpm", 8)
        .row("nkledger", NKLEDGER, "nkledger", 11)
        .row("norvak-catalogue", NKPM_CATALOGUE, "norvak-catalogue", 0);
}

void tst_ToolPages::pagesFollowTheHelp()
{
    QFETCH(QString, program);
    QFETCH(QString, name);
    QFETCH(int, commands);
    const ToolPages help(program, commands > 0);
    QCOMPARE(help.commands().size(), commands);
    QCOMPARE(help.badHelp(), QStringList());
    for (const QString &page :
         {"man/" + name + ".1", "completions/" + name + ".bash", "completions/_" + name}) {
        QCOMPARE(help.missingIn(page), QStringList());
        QCOMPARE(help.unknownIn(page), QStringList());
    }
}

void tst_ToolPages::bashCompletes_data()
{
    Columns<QString, QString>("line", "expected")
        .row("command", "nkpm so", "sources")
        .row("care of the store", "nkpm --json store re", "repair")
        .row("its option", "nkpm store clean --m", "--max-size")
        .row("source", "nkpm --local ca", "catalogue")
        .row("command behind a source", "nkpm --json --local catalogue in", "install")
        .row("source called like a command", "nkpm --local list key", "keywords")
        .row("options of a command", "nkpm keywords --ca", "--categories")
        .row("what to do with a collection", "nkpm --json collection room.json re", "remove")
        .row("collection", "nkpm collection card", "cards.txt")
        .row("options of an action", "nkpm collection room.json install --i", "--into")
        .row("directory", "nkpm install chair --into ca", "catalogue")
        .row("nothing for a package", "nkpm show ca", "")
        .row("two commands of the ledger", "nkledger i", "issue inspect")
        .row("its command behind an option", "nkledger --json ser", "serve")
        .row(
            "all options of its command", "nkledger publish --",
            "--json --help --issuer --trust --follow-links --force")
        .row("its directory", "nkledger publish ca", "catalogue")
        .row("file for an option", "nkledger publish --issuer st", "studio-private.pem")
        .row("nothing for a port", "nkledger serve --port ", "");
}

void tst_ToolPages::bashCompletes()
{
    QFETCH(QString, line);
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("catalogue");
    writeFile(directory.filePath("cards.txt"), "");
    writeFile(directory.filePath("studio-private.pem"), "");
    QStringList words = line.split(' ');
    const QString tool = words.takeFirst();
    QTEST(bashCompletions(tool, words, directory.path()), "expected");
}

QTEST_GUILESS_MAIN(tst_ToolPages)
#include "tst_toolpages.moc"

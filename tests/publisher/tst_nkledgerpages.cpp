// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "nkledgerprocess.h"
#include "support/testfiles.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>

using namespace nk::pm::test;

/// The man page and the completions say what the program's own help says.
class tst_NkledgerPages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void knowAllOptions_data();
    void knowAllOptions();
    void knowNoOtherOptions_data();
    void knowNoOtherOptions();
    void bashCompletes_data();
    void bashCompletes();

private:
    static QStringList longOptions(const QString &text);
    static QString page(const QString &name);

    QStringList m_commands;
    QStringList m_options; // of all commands, each once
};

QStringList tst_NkledgerPages::longOptions(const QString &text)
{
    static const QRegularExpression option("(?<![\\w-])--[a-z][a-z-]*[a-z]");
    QStringList found;
    for (auto it = option.globalMatch(text); it.hasNext();)
        found.append(it.next().captured());
    found.removeDuplicates();
    return found;
}

QString tst_NkledgerPages::page(const QString &name)
{
    QString text = readFile(NKPM_PACKAGING "/" + name);
    return text.replace("\\-", "-");
}

void tst_NkledgerPages::initTestCase()
{
    const QString help = callNkledger(QDir::tempPath(), {"--help"}).output;
    m_options = longOptions(help);
    static const QRegularExpression command(
        "^  ([a-z][a-z-]+)  +[A-Z]", QRegularExpression::MultilineOption);
    for (auto it = command.globalMatch(help); it.hasNext();)
        m_commands.append(it.next().captured(1));
    QCOMPARE(m_commands.size(), 11);
    for (const QString &name : qAsConst(m_commands)) {
        const CallResult result = callNkledger(QDir::tempPath(), {name, "--help"});
        QCOMPARE(result.exitCode, 0);
        QVERIFY2(result.output.contains("Example"), qPrintable(name));
        m_options += longOptions(result.output);
    }
    m_options.removeDuplicates();
    QVERIFY(m_options.contains("--server-name"));
}

void tst_NkledgerPages::knowAllOptions_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("man page") << "man/nkledger.1";
    QTest::newRow("bash") << "completions/nkledger.bash";
    QTest::newRow("zsh") << "completions/_nkledger";
}

void tst_NkledgerPages::knowAllOptions()
{
    QFETCH(QString, name);
    const QString text = page(name);
    for (const QString &command : qAsConst(m_commands))
        QVERIFY2(text.contains(QRegularExpression("\\b" + command + "\\b")), qPrintable(command));
    const QStringList known = longOptions(text);
    for (const QString &option : qAsConst(m_options))
        QVERIFY2(known.contains(option), qPrintable(option));
}

void tst_NkledgerPages::knowNoOtherOptions_data()
{
    knowAllOptions_data();
}

void tst_NkledgerPages::knowNoOtherOptions()
{
    QFETCH(QString, name);
    for (const QString &option : longOptions(page(name)))
        QVERIFY2(m_options.contains(option), qPrintable(option));
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
    QFETCH(QString, expected);
    QTemporaryDir directory;
    QDir(directory.path()).mkdir("catalogue");
    writeFile(directory.filePath("cards.txt"), "");
    writeFile(directory.filePath("studio-private.pem"), "");
    QProcess bash;
    bash.setWorkingDirectory(directory.path());
    bash.start(
        "bash",
        QStringList{
            "-c",
            "source \"$0\"; COMP_WORDS=(nkledger \"$@\"); COMP_CWORD=$#; _nkledger; "
            "echo \"${COMPREPLY[*]}\"",
            NKPM_PACKAGING "/completions/nkledger.bash"}
            + words);
    QVERIFY(bash.waitForFinished());
    QCOMPARE(QString(bash.readAllStandardError()), QString());
    QCOMPARE(QString(bash.readAllStandardOutput()).trimmed(), expected);
}

QTEST_GUILESS_MAIN(tst_NkledgerPages)
#include "tst_nkledgerpages.moc"

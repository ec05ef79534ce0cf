// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

using nk::pm::test::readFile;

namespace {

const QString sourceDirectory = NKPM_SOURCE_DIR;

QStringList sourceFiles()
{
    QStringList files;
    for (const char *folder : {"/src", "/platform"}) {
        QDirIterator it(
            sourceDirectory + folder, {"*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            files.append(it.next());
    }
    files.sort();
    return files;
}

/// The texts in a statement of C++; texts side by side are one.
QStringList literals(QString statement)
{
    statement.remove(QRegularExpression("\"\\s+\""));
    static const QRegularExpression literal("\"((?:[^\"\\\\]|\\\\.)*)\"");
    QStringList texts;
    for (auto it = literal.globalMatch(statement); it.hasNext();)
        texts.append(it.next().captured(1).replace("\\\"", "\""));
    return texts;
}

} // namespace

/// The page names each line that the library may write to the log.
class tst_TroubleshootingPage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void namesEachLine_data();
    void namesEachLine();
    void namesEachCategory();

private:
    QString m_page;
};

void tst_TroubleshootingPage::initTestCase()
{
    m_page = readFile(sourceDirectory + "/docs/troubleshooting.md");
    QVERIFY(!m_page.isEmpty());
}

void tst_TroubleshootingPage::namesEachLine_data()
{
    QTest::addColumn<QString>("text");
    static const QRegularExpression statement(
        "\\b(?:qC?(?:Debug|Info|Warning|Critical)|qFatal|qmlWarning|fail(?=\\(\"))\\s*\\([^;]*;");
    for (const QString &file : sourceFiles()) {
        const QString name = QDir(sourceDirectory).relativeFilePath(file);
        const QString source = readFile(file);
        for (auto it = statement.globalMatch(source); it.hasNext();) {
            for (const QString &text : literals(it.next().captured()))
                QTest::newRow(qPrintable(name + ": " + text)) << text;
        }
    }
}

void tst_TroubleshootingPage::namesEachLine()
{
    QFETCH(QString, text);
    for (const QString &part : text.split(QRegularExpression("%s(?:/%s)?"))) {
        if (!part.trimmed().isEmpty())
            QVERIFY2(m_page.contains(part.trimmed()), qPrintable(part));
    }
}

void tst_TroubleshootingPage::namesEachCategory()
{
    static const QRegularExpression category("Q_LOGGING_CATEGORY\\(\\w+, \"([^\"]+)\"");
    // Declared for those who derive from the installers; nothing is written there.
    const QStringList unused{"norvak.packageserver.installer", "norvak.package.couchdb.installer"};
    int count = 0;
    for (const QString &file : sourceFiles()) {
        const QString source = readFile(file);
        for (auto it = category.globalMatch(source); it.hasNext(); ++count) {
            const QString name = it.next().captured(1);
            QVERIFY2(unused.contains(name) || m_page.contains("`" + name + "`"), qPrintable(name));
        }
    }
    QVERIFY(count > unused.size());
}

QTEST_GUILESS_MAIN(tst_TroubleshootingPage)
#include "tst_troubleshootingpage.moc"

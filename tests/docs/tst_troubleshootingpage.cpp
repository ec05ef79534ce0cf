// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDirIterator>
#include <QRegularExpression>
#include <QTest>

using nk::pm::test::readFile;

namespace {

/// The content of each source file of the library.
QStringList sources()
{
    QStringList contents;
    for (const char *folder : {NKPM_SOURCE_DIR "/src", NKPM_SOURCE_DIR "/platform"}) {
        QDirIterator it(folder, {"*.cpp"}, QDir::Files, QDirIterator::Subdirectories);
        while (it.hasNext())
            contents.append(readFile(it.next()));
    }
    return contents;
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
    void namesEachLine();
    void namesEachCategory();

private:
    const QString m_page = readFile(NKPM_SOURCE_DIR "/docs/troubleshooting.md");
};

void tst_TroubleshootingPage::namesEachLine()
{
    static const QRegularExpression statement(
        "\\b(?:qC?(?:Debug|Info|Warning|Critical)|qFatal|qmlWarning|fail(?=\\(\"))\\s*\\([^;]*;");
    int count = 0;
    QStringList missing;
    for (const QString &source : sources()) {
        for (auto it = statement.globalMatch(source); it.hasNext(); ++count) {
            for (const QString &text : literals(it.next().captured())) {
                for (const QString &part : text.split(QRegularExpression("%s(?:/%s)?"))) {
                    if (!m_page.contains(part.trimmed()))
                        missing.append(part);
                }
            }
        }
    }
    QCOMPARE(missing, QStringList());
    QVERIFY(count > 50);
}

void tst_TroubleshootingPage::namesEachCategory()
{
    static const QRegularExpression category("Q_LOGGING_CATEGORY\\(\\w+, \"([^\"]+)\"");
    QStringList missing;
    for (const QString &source : sources()) {
        for (auto it = category.globalMatch(source); it.hasNext();) {
            const QString name = it.next().captured(1);
            if (!m_page.contains("`" + name + "`"))
                missing.append(name);
        }
    }
    missing.sort();
    // Declared for those who derive from the installers; nothing is written there.
    const QStringList unused{"norvak.package.couchdb.installer", "norvak.packageserver.installer"};
    QCOMPARE(missing, unused);
}

QTEST_GUILESS_MAIN(tst_TroubleshootingPage)
#include "tst_troubleshootingpage.moc"

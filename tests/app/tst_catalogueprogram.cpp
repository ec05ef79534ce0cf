// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/columns.h"
#include "support/programcall.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

using namespace nk::pm::test;

/// norvak-catalogue as a process, where it can't show a window.
class CatalogueProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_directory.reset(new QTemporaryDir); }
    void helpNeedsNoDisplay();
    void windowNeedsADisplay();
    void pictureNeedsNoDisplay();
    void faultsAreOneLine_data();
    void faultsAreOneLine();

private:
    CallResult run(const QStringList &arguments) const
    {
        return call(
            NKPM_CATALOGUE, arguments, {},
            {{"QT_QPA_PLATFORM", {}},
             {"DISPLAY", {}},
             {"WAYLAND_DISPLAY", {}},
             {"XDG_DATA_HOME", path("data")},
             {"XDG_CONFIG_HOME", path("config")},
             {"XDG_RUNTIME_DIR", m_directory->path()}});
    }
    QString path(const QString &name) const { return m_directory->filePath(name); }

    QScopedPointer<QTemporaryDir> m_directory;
};

void CatalogueProgramTest::helpNeedsNoDisplay()
{
    const CallResult help = run({"--help"});
    QCOMPARE(help.exitCode, 0);
    QVERIFY(help.output.contains("--screenshot"));
    QCOMPARE(help.errors, QString());
    QCOMPARE(run({"--no-such-option"}).exitCode, 2);
}

void CatalogueProgramTest::windowNeedsADisplay()
{
    const CallResult result = run({"--local", NKPM_EXAMPLE_CATALOGUE});
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.errors.startsWith("norvak-catalogue: There is no display"));
    QCOMPARE(result.errors.count('\n'), 1);
    QVERIFY(!QFile::exists(path("data")));
}

void CatalogueProgramTest::pictureNeedsNoDisplay()
{
    const CallResult result = run(
        {"--local", NKPM_EXAMPLE_CATALOGUE, "--data", path("data"), "--size", "900x700",
         "--screenshot", path("picture.png")});
    QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
    QCOMPARE(QImage(path("picture.png")).size(), QSize(900, 700));
}

void CatalogueProgramTest::faultsAreOneLine_data()
{
    Columns<QString, QString>("option", "value")
        .row("catalogue", "--local", "/nowhere")
        .row("data directory", "--data", "/dev/null/data")
        .row("collection", "--collection", "/nowhere.json");
}

void CatalogueProgramTest::faultsAreOneLine()
{
    QFETCH(QString, option);
    QFETCH(QString, value);
    QMap<QString, QString> options{{"--local", NKPM_EXAMPLE_CATALOGUE}, {"--data", path("data")}};
    options[option] = value;
    QStringList arguments{"--screenshot", path("picture.png")};
    for (auto each = options.cbegin(); each != options.cend(); ++each)
        arguments << each.key() << each.value();
    const CallResult result = run(arguments);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.startsWith("norvak-catalogue: "), qPrintable(result.errors));
    QVERIFY2(result.errors.contains(value), qPrintable(result.errors));
    QVERIFY2(result.errors.count('\n') <= 2, qPrintable(result.errors));
    QVERIFY(!QFile::exists(path("picture.png")));
}

QTEST_GUILESS_MAIN(CatalogueProgramTest)
#include "tst_catalogueprogram.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include <QImage>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

/// norvak-catalogue as a process, where it can't show a window.
class CatalogueProgramTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void helpNeedsNoDisplay();
    void windowNeedsADisplay();
    void pictureNeedsNoDisplay();
    void faultsAreOneLine_data();
    void faultsAreOneLine();

private:
    int run(const QStringList &arguments)
    {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"})
            environment.remove(name);
        environment.insert("XDG_DATA_HOME", m_directory->filePath("data"));
        environment.insert("XDG_CONFIG_HOME", m_directory->filePath("config"));
        environment.insert("XDG_RUNTIME_DIR", m_directory->path());
        process.setProcessEnvironment(environment);
        process.start(NKPM_CATALOGUE, arguments);
        const bool ended = process.waitForFinished(60000);
        m_errors = process.readAllStandardError();
        m_output = process.readAllStandardOutput();
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }

    std::unique_ptr<QTemporaryDir> m_directory;
    QByteArray m_output;
    QByteArray m_errors;
};

void CatalogueProgramTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void CatalogueProgramTest::helpNeedsNoDisplay()
{
    QCOMPARE(run({"--help"}), 0);
    QVERIFY(m_output.contains("--screenshot"));
    QCOMPARE(m_errors, QByteArray());
    QCOMPARE(run({"--no-such-option"}), 2);
}

void CatalogueProgramTest::windowNeedsADisplay()
{
    QCOMPARE(run({"--local", NKPM_EXAMPLE_CATALOGUE}), 1);
    QVERIFY2(m_errors.startsWith("norvak-catalogue: There is no display"), m_errors);
    QCOMPARE(m_errors.count('\n'), 1);
    QVERIFY(!QFile::exists(m_directory->filePath("data")));
}

void CatalogueProgramTest::pictureNeedsNoDisplay()
{
    const QString file = m_directory->filePath("picture.png");
    const QStringList arguments{"--local", NKPM_EXAMPLE_CATALOGUE,
                                "--data",  m_directory->filePath("data"),
                                "--size",  "900x700"};
    QVERIFY2(run(arguments + QStringList{"--screenshot", file}) == 0, m_errors);
    QCOMPARE(QImage(file).size(), QSize(900, 700));
}

void CatalogueProgramTest::faultsAreOneLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("named");
    QTest::newRow("catalogue") << QStringList{"--local", "/nowhere"} << QByteArray("/nowhere");
    QTest::newRow("data directory")
        << QStringList{"--local", NKPM_EXAMPLE_CATALOGUE, "--data", "/dev/null/data"}
        << QByteArray("/dev/null/data");
    QTest::newRow("collection") << QStringList{
        "--local", NKPM_EXAMPLE_CATALOGUE, "--collection",
        "/nowhere.json"} << QByteArray("/nowhere.json");
}

void CatalogueProgramTest::faultsAreOneLine()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, named);
    if (!arguments.contains("--data"))
        arguments += QStringList{"--data", m_directory->filePath("data")};
    arguments += QStringList{"--screenshot", m_directory->filePath("picture.png")};
    QCOMPARE(run(arguments), 1);
    QVERIFY2(m_errors.startsWith("norvak-catalogue: "), m_errors);
    QVERIFY2(m_errors.contains(named), m_errors);
    QVERIFY2(m_errors.count('\n') <= 2, m_errors);
    QVERIFY(!QFile::exists(m_directory->filePath("picture.png")));
}

QTEST_GUILESS_MAIN(CatalogueProgramTest)

#include "tst_catalogueprogram.moc"

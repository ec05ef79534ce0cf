// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDir>
#include <QDirIterator>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QUrl>
#include <QtTest>

using namespace nk::pm::test;

/// scripts/tour.sh, what ./run shows.
class TestTour : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void publishesServesAndInstalls();

private:
    QString tour(int *exitCode) const;

    QTemporaryDir m_directory;
};

QString TestTour::tour(int *exitCode) const
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(
        "bash", {NKPM_TOUR, NKPM_PROGRAM, NKLEDGER, NKPM_EXAMPLE_CATALOGUE, m_directory.path()});
    *exitCode = process.waitForFinished(280000) ? process.exitCode() : -1;
    return process.readAll();
}

void TestTour::publishesServesAndInstalls()
{
    int exitCode = -1;
    QString text = tour(&exitCode);
    QVERIFY2(exitCode == 0, qPrintable(text));
    QVERIFY2(text.contains("58 new signatures, 0 kept"), qPrintable(text));

    // What was installed over HTTP is what lies in the catalogue.
    int files = 0;
    const QString installed = m_directory.filePath("project-from-server");
    for (QDirIterator it(installed, QDir::Files, QDirIterator::Subdirectories); it.hasNext();) {
        const QString path = it.next().mid(installed.size());
        QCOMPARE(readFile(installed + path), readFile(NKPM_EXAMPLE_CATALOGUE "/packages" + path));
        ++files;
    }
    QVERIFY(files > 20);

    // The server has gone.
    const QString address =
        QRegularExpression("http://127\\.0\\.0\\.1:\\d+/").match(text).captured();
    QVERIFY(!address.isEmpty());
    QTcpSocket socket;
    socket.connectToHost("127.0.0.1", quint16(QUrl(address).port()));
    QVERIFY(!socket.waitForConnected(1000));

    // The second time nothing has to be signed or copied.
    text = tour(&exitCode);
    QVERIFY2(exitCode == 0, qPrintable(text));
    QVERIFY2(text.contains("0 new signatures, 58 kept"), qPrintable(text));
    QVERIFY(text.contains("unchanged"));
}

QTEST_GUILESS_MAIN(TestTour)
#include "tst_tour.moc"

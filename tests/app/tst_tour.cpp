// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/programcall.h"
#include "support/testfiles.h"

#include <QDir>
#include <QDirIterator>
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
    CallResult tour() const
    {
        return call(
            "bash",
            {NKPM_TOUR, NKPM_PROGRAM, NKLEDGER, NKPM_EXAMPLE_CATALOGUE, m_directory.path()});
    }

    QTemporaryDir m_directory;
};

void TestTour::publishesServesAndInstalls()
{
    const CallResult first = tour();
    QVERIFY2(first.exitCode == 0, qPrintable(first.errors));
    const QString text = first.output;
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
    const CallResult second = tour();
    QVERIFY2(second.exitCode == 0, qPrintable(second.errors));
    QVERIFY2(second.output.contains("0 new signatures, 58 kept"), second.output);
    QVERIFY(second.output.contains("unchanged"));
}

QTEST_GUILESS_MAIN(TestTour)
#include "tst_tour.moc"

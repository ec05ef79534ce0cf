// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerstore.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QProcess>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int ledgerSize = 16000000; // large enough that a kill hits the middle of a write

/// A process that persists one snapshot after the other.
class Saver : public QProcess
{
public:
    Saver(const ScopedDataLocation &data, const QString &name, int count)
    {
        start(
            LEDGERSAVER, {data.path(), name, QString::number(count), QString::number(ledgerSize)});
    }

    /// Waits until snapshot \a number is begun.
    bool begins(int number)
    {
        while (m_output.count('\n') <= number && waitForReadyRead(60000))
            m_output += readAllStandardOutput();
        return m_output.count('\n') > number;
    }

    bool ended(int milliseconds) { return state() == NotRunning || waitForFinished(milliseconds); }

    bool endsWell() { return ended(120000) && exitStatus() == NormalExit && exitCode() == 0; }

private:
    QByteArray m_output;
};

/// The number of a whole snapshot, whose content is that of its ETag; -1 for any other.
int numberOf(const LedgerSnapshot &snapshot)
{
    const int number = snapshot.etag.split('-').value(1, "-1").toInt();
    static const QByteArray contents[] = {
        numberedContent(0, ledgerSize), numberedContent(1, ledgerSize)};
    return number >= 0 && snapshot.ledger == contents[number % 2] ? number : -1;
}

} // namespace

/// The persisted ledger across processes, which end in every way.
class tst_LedgerProcesses : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QLoggingCategory::setFilterRules("norvak.packageserver=false"); }
    void killedWhilePersisting_data();
    void killedWhilePersisting();
    void twoProcessesShareOneDirectory();
};

void tst_LedgerProcesses::killedWhilePersisting_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("delay"); // milliseconds
    for (int number : {0, 1, 2}) {
        for (int delay : {0, 3, 6, 12, 24})
            QTest::addRow("snapshot %d, %d ms after its begin", number, delay) << number << delay;
    }
}

void tst_LedgerProcesses::killedWhilePersisting()
{
    QFETCH(int, number);
    QFETCH(int, delay);
    const ScopedDataLocation data;
    Saver saver(data, "killed", 1000000);
    QVERIFY(saver.begins(number));
    saver.waitForReadyRead(delay);
    saver.kill();
    QVERIFY(saver.waitForFinished());

    const LedgerStore store("shared");
    const LedgerSnapshot left = store.load();
    if (number == 0 && left.etag.isEmpty())
        QCOMPARE(left.ledger, QByteArray());
    else
        QVERIFY2(numberOf(left) >= number - 1, left.etag.constData());
    // Neither its lock nor its half-written file is in the way of the next.
    store.save({"next-7", numberedContent(1, ledgerSize)});
    QCOMPARE(numberOf(store.load()), 7);
    const QDir directory(data.filePath("packages/servers/shared"));
    QCOMPARE(directory.entryList(QDir::Files | QDir::Hidden), QStringList({"ledger"}));
}

void tst_LedgerProcesses::twoProcessesShareOneDirectory()
{
    const ScopedDataLocation data;
    Saver one(data, "one", 10);
    Saver other(data, "other", 10);
    QVERIFY(one.begins(1) && other.begins(1));
    const LedgerStore store("shared");
    do {
        QVERIFY(numberOf(store.load()) >= 0);
    } while (!one.ended(0) || !other.ended(0));
    QVERIFY(one.endsWell() && other.endsWell());
    QCOMPARE(numberOf(store.load()), 9);
}

QTEST_GUILESS_MAIN(tst_LedgerProcesses)
#include "tst_ledgerprocesses.moc"

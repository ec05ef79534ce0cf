// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerstore.h"
#include "support/filesizelimit.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QLockFile>
#include <QtTest>

#include <atomic>
#include <thread>

using namespace nk::pm;
using namespace nk::pm::test;

class tst_LedgerStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void writesTheFormat();
    void readsBack();
    void skipsTheSameEtag();
    void cutFiles();
    void linesOfFailures();
    void fullDiskKeepsTheOldSnapshot();
    void removesRemainsOfADeadWriter();
    void waitsForTheLock();
    void uuidsThatNameNoDirectory();

private:
    QString path(const QString &name) const
    {
        return m_data->filePath("packages/servers/service-1/" + name);
    }

    QScopedPointer<ScopedDataLocation> m_data;
    QScopedPointer<LogRecorder> m_log;
};

void tst_LedgerStore::init()
{
    m_data.reset(new ScopedDataLocation);
    m_log.reset(new LogRecorder("norvak.packageserver"));
}

void tst_LedgerStore::cleanup()
{
    m_log.reset();
    m_data.reset();
}

void tst_LedgerStore::writesTheFormat()
{
    LedgerStore("service-1").save({"\"e1\"", "ledger bytes"});
    QCOMPARE(
        readFile(path("ledger")).toHex(),
        QByteArray("00000004").append(QByteArray("\"e1\"").toHex())
            + QByteArray("0000000c").append(QByteArray("ledger bytes").toHex()));
    QStringList lines = m_log->lines();
    QCOMPARE(lines.size(), 2);
    QCOMPARE(
        lines.at(0),
        QString("debug: Persisting ledger for package server \"service-1\" ETag \"\\\"e1\\\"\""));
    const QRegularExpression took(
        "^debug: Persisting ledger of \"service-1\" took [0-9.e-]+ msecs$");
    QVERIFY2(took.match(lines.at(1)).hasMatch(), qPrintable(lines.at(1)));
    QVERIFY(!QFile::exists(path(".lock")));
}

void tst_LedgerStore::readsBack()
{
    const LedgerStore store("service-1");
    QCOMPARE(store.load().etag, QByteArray());
    QVERIFY(m_log->lines().isEmpty());
    const LedgerSnapshot snapshots[] = {
        {"\"abc\"", QByteArray("bytes\0more", 10)},
        {"W/\"abc\"", QByteArray()},
        {"\"large\"", numberedContent(1, 5000000)},
    };
    for (const LedgerSnapshot &saved : snapshots) {
        store.save(saved);
        m_log->clear();
        const LedgerSnapshot loaded = store.load();
        QCOMPARE(loaded.etag, saved.etag);
        QVERIFY(loaded.ledger == saved.ledger);
        const QString etag = QString(saved.etag).replace('"', "\\\"");
        QCOMPARE(
            m_log->lines(),
            QStringList({"debug: Loaded persisted ledger of \"service-1\" ETag \"" + etag + '"'}));
    }
    QCOMPARE(LedgerStore("service-2").load().ledger, QByteArray());
}

void tst_LedgerStore::skipsTheSameEtag()
{
    const LedgerStore store("service-1");
    store.save({"\"e1\"", "one"});
    m_log->clear();
    store.save({"\"e1\"", "two"});
    QCOMPARE(
        m_log->lines().first(),
        QString("debug: Skipping ledger persistence for \"service-1\" - already persisted"));
    QCOMPARE(store.load().ledger, QByteArray("one"));
    store.save({"\"e2\"", "two"});
    QCOMPARE(store.load().ledger, QByteArray("two"));
}

void tst_LedgerStore::cutFiles()
{
    const LedgerStore store("service-1");
    store.save({"\"e1\"", "ledger"});
    const QByteArray whole = readFile(path("ledger"));
    for (int size = 0; size < whole.size(); ++size) {
        writeFile(path("ledger"), whole.left(size));
        const LedgerSnapshot snapshot = store.load();
        QCOMPARE(snapshot.etag, size < 8 ? QByteArray() : QByteArray("\"e1\""));
        QVERIFY(QByteArray("ledger").startsWith(snapshot.ledger));
    }
    // A length of far more than there is.
    writeFile(path("ledger"), QByteArray::fromHex("7fffffff00"));
    QCOMPARE(store.load().etag, QByteArray());
    store.save({"\"e1\"", "ledger"});
    QCOMPARE(readFile(path("ledger")), whole);
}

void tst_LedgerStore::linesOfFailures()
{
    const LedgerStore store("service-1");
    QVERIFY(QDir().mkpath(path("ledger"))); // a directory in the place of the file
    store.load();
    QCOMPARE(
        m_log->lines("critical"),
        QStringList({"Failed to open persisted ledger file \"" + path("ledger") + '"'}));
    m_log->clear();
    store.save({"\"e1\"", "ledger"});
    const QString line = m_log->lines("critical").value(0);
    QVERIFY2(
        line.startsWith("Failed to open target file for ledger pesistence: "), qPrintable(line));

    const ScopedDataLocation other;
    writeFile(other.filePath("packages/servers"), "in the way");
    m_log->clear();
    LedgerStore("service-1").save({"\"e1\"", "ledger"});
    QCOMPARE(
        m_log->lines(),
        QStringList({"critical: Failed to create persistence directory forledger persistence "
                     "of \"service-1\""}));
}

void tst_LedgerStore::fullDiskKeepsTheOldSnapshot()
{
    const LedgerStore store("service-1");
    store.save({"\"e1\"", "ledger"});
    m_log->clear();
    {
        const FileSizeLimit limit(100000);
        store.save({"\"e2\"", numberedContent(1, 1000000)});
    }
    const QString line = m_log->lines("critical").value(0);
    QVERIFY2(
        line.startsWith("Failed to commit target file for ledger pesistence: "), qPrintable(line));
    QCOMPARE(store.load().etag, QByteArray("\"e1\""));
    QCOMPARE(store.load().ledger, QByteArray("ledger"));
    QCOMPARE(QDir(path("")).entryList(QDir::Files | QDir::Hidden), QStringList({"ledger"}));
}

void tst_LedgerStore::removesRemainsOfADeadWriter()
{
    writeFile(path("ledger.AbCdEf"), "half a ledger");
    writeFile(path("ledger.json"), "somebody else's");
    writeFile(path("ledger"), "");
    LedgerStore("service-1").save({"\"e1\"", "ledger"});
    QCOMPARE(
        QDir(path("")).entryList(QDir::Files | QDir::Hidden),
        QStringList({"ledger", "ledger.json"}));
}

void tst_LedgerStore::waitsForTheLock()
{
    const LedgerStore store("service-1");
    store.save({"\"e1\"", "one"});
    QLockFile lock(path(".lock"));
    QVERIFY(lock.lock());
    std::atomic_bool released{false};
    bool waited = false;
    std::thread writer([&] {
        store.save({"\"e2\"", "two"});
        waited = released;
    });
    QTest::qWait(50); // a writer that doesn't wait would be done by now
    released = true;
    lock.unlock();
    writer.join();
    QVERIFY(waited);
    QCOMPARE(store.load().ledger, QByteArray("two"));
}

void tst_LedgerStore::uuidsThatNameNoDirectory()
{
    for (const char *uuid :
         {"", ".", "..", "../service-1", "a/../../b", "a\\b", ".hidden", "/etc"}) {
        const LedgerStore store(uuid);
        store.save({"\"e1\"", "ledger"});
        QVERIFY2(
            QDir(m_data->path()).isEmpty(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden),
            uuid);
        QCOMPARE(store.load().etag, QByteArray());
    }
}

QTEST_APPLESS_MAIN(tst_LedgerStore)
#include "tst_ledgerstore.moc"

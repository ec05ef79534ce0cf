// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgercursor.h"
#include "sources/ledgertables.h"
#include "support/ledgerbuilder.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

const QByteArray signature(64, 's');
const QByteArray hash(28, 'h');

QByteArray segment(const QByteArray &payload)
{
    return ".seg" + u32(quint32(payload.size())) + payload;
}

// Two types and the tables that package records refer to.
QByteArray packageSegment(quint32 count, const QByteArray &records)
{
    return segment(
        u16(2) + ledgerString("model") + ledgerString("model:part") + u32(count) + records);
}

QByteArray packageHead(int type, int issuer)
{
    return u16(type) + u16(issuer) + signature + ledgerString("id");
}

} // namespace

class tst_LedgerTables : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytesLeaveOkAlone();
    void issuersCutShort();
    void issuerQuirk();
    void keywordsRefused_data();
    void keywordsRefused();
    void packagesRefused();
    void filesAreSortedByTheirBytes();
    void linksCutShort();
};

void tst_LedgerTables::bytesLeaveOkAlone()
{
    const QByteArray segment = ".pkg" + u32(0) + "abcd";
    LedgerCursor cursor(segment);
    QCOMPARE(cursor.bytes(3), segment.constData() + 8);
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8('d'));
    QCOMPARE(cursor.bytes(1), nullptr);
    QVERIFY(cursor.ok());
    for (const QByteArray &shorter : {QByteArray(), QByteArray(".pk")}) {
        LedgerCursor none(shorter);
        QCOMPARE(none.u8(), quint8(0));
        QVERIFY(!none.ok() && !none.bytes(1));
    }
}

void tst_LedgerTables::issuersCutShort()
{
    const QByteArray whole =
        u16(1) + signature + ledgerString("first") + ledgerString("second") + ledgerString("key");
    for (int size = 0; size < whole.size(); ++size) {
        const QByteArray bytes = segment(whole.left(size));
        LedgerTables tables;
        QVERIFY2(!readIssuers(bytes, tables).good, qPrintable(QString::number(size)));
        QVERIFY(tables.issuers.isEmpty());
    }
}

void tst_LedgerTables::issuerQuirk()
{
    // A label that passes the end doesn't fail the record; the next strings are read behind its
    // length.
    const QByteArray bytes =
        segment(u16(1) + signature + u16(500) + ledgerString("b") + ledgerString("c"));
    LedgerTables tables;
    QVERIFY(readIssuers(bytes, tables).good);
    QVERIFY(tables.issuers.at(0).firstLabel.isNull());
    QCOMPARE(tables.issuers.at(0).secondLabel.bytes(), QByteArray("b"));
    QCOMPARE(tables.issuers.at(0).publicKey.bytes(), QByteArray("c"));
}

void tst_LedgerTables::keywordsRefused_data()
{
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("headCount");
    QTest::addColumn<quint32>("recordCount");
    QTest::addColumn<int>("failedRecord");
    const quint32 none = 77; // that a count couldn't be read
    const QByteArray head = u16(1) + ledgerString("de");
    const QByteArray record = u8(0) + ledgerString("k");
    const auto row = [](const char *name, const QByteArray &payload, int headCount,
                        quint32 recordCount, int failedRecord) {
        QTest::newRow(name) << payload << headCount << recordCount << failedRecord;
    };
    row("nothing at all", {}, 0, none, -1);
    row("language missing", u16(1), 1, none, -1);
    row("language cut", u16(1) + u16(2) + "d", 1, none, -1);
    row("keyword count cut", head + "\1", 1, none, -1);
    row("more than a file can hold", head + u32(~0u) + record + u16(0), 1, ~0u, 1);
    row("group count cut", head + u32(1) + record + "\1", 1, 1, 0);
    row("group missing", head + u32(1) + record + u16(1), 1, 1, 0);
    row("string missing", head + u32(1) + record + u16(1) + u16(0) + u8(1), 1, 1, 0);
    row("language index equal to the count", head + u32(1) + record + u16(1) + u16(1) + u8(0), 1, 1,
        0);
}

void tst_LedgerTables::keywordsRefused()
{
    QFETCH(QByteArray, payload);
    const QByteArray bytes = segment(payload);
    LedgerTables tables;
    const SegmentReading reading = readKeywords(bytes, tables);
    QVERIFY(!reading.good);
    QTEST(int(reading.headCount), "headCount");
    QTEST(reading.recordCount.value_or(77), "recordCount");
    QTEST(reading.failedRecord, "failedRecord");
}

void tst_LedgerTables::packagesRefused()
{
    const QByteArray file = hash + ledgerString("a");
    const QByteArray whole = packageHead(0, 0) + ledgerString("{}") + u16(1) + file;
    QVector<QByteArray> records{
        packageHead(2, 0) + ledgerString("{}") + u16(0), // type index equal to the type count
        packageHead(0, 1) + ledgerString("{}") + u16(0), // issuer index equal to the issuer count
        // The hash doesn't fit and stays unread, the name is read in its place.
        packageHead(0, 0) + ledgerString("{}") + u16(1) + ledgerString("a"),
        // The same for a signature: what follows fits without it.
        u16(0) + u16(0) + ledgerString("id") + ledgerString("{}") + u16(0)};
    for (int size = 0; size < whole.size(); ++size)
        records.append(whole.left(size));
    for (const QByteArray &record : records) {
        const QByteArray bytes = packageSegment(1, record);
        LedgerTables tables;
        tables.issuers.resize(1);
        const SegmentReading reading = readPackages(bytes, tables);
        QVERIFY2(!reading.good, record.toHex());
        QCOMPARE(reading.failedRecord, 0);
        QVERIFY(tables.packages.isEmpty());
    }
}

void tst_LedgerTables::filesAreSortedByTheirBytes()
{
    QByteArray records = QByteArray(28, '1') + ledgerString("b"); // replaced by the later one
    for (const char *name : {"", "a/b", "\xc3\xa4", "a", "b"})
        records += QByteArray(28, name[0]) + ledgerString(name);
    const QByteArray bytes =
        packageSegment(1, packageHead(0, 0) + ledgerString("{}") + u16(6) + records);
    LedgerTables tables;
    tables.issuers.resize(1);
    QVERIFY(readPackages(bytes, tables).good);
    const LedgerFiles files = tables.packages.at(0).files;
    QList<QByteArray> names;
    for (const LedgerFile &file : files.sortedUnique()) {
        names.append(file.name.bytes());
        const char first = file.name.length ? file.name.data[0] : 0;
        QCOMPARE(QByteArray(file.hash, 28), QByteArray(28, first));
    }
    QCOMPARE(names, QList<QByteArray>({"", "a", "a/b", "b", "\xc3\xa4"}));
    QCOMPARE(QByteArray(files.hashOf("b"), 28), QByteArray(28, 'b'));
    QVERIFY(!files.hashOf("c"));
    QVERIFY(files.hashOf(""));
    QVERIFY(LedgerFiles().sortedUnique().isEmpty() && !LedgerFiles().hashOf(""));
}

void tst_LedgerTables::linksCutShort()
{
    LedgerBuilder builder;
    const QByteArray whole =
        builder.addLink(0, 0, 0, 0).addLink(0, 0, 0, 0).segments().at(3).second;
    for (int size = 4; size < whole.size(); ++size) {
        const QByteArray bytes = segment(whole.left(size));
        LedgerTables tables;
        const SegmentReading reading = readLinks(bytes, tables);
        QVERIFY(!reading.good);
        QCOMPARE(reading.failedRecord, size < 14 ? 0 : 1);
        QCOMPARE(tables.links.size(), reading.failedRecord);
    }
    // A count reserves nothing.
    const QByteArray bytes = segment(u32(0xffffffff) + QByteArray(30, '\0'));
    LedgerTables tables;
    QCOMPARE(*readLinks(bytes, tables).recordCount, 0xffffffffu);
    QVERIFY(tables.links.capacity() < 100);
}

QTEST_APPLESS_MAIN(tst_LedgerTables)
#include "tst_ledgertables.moc"

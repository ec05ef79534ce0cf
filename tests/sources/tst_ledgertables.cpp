// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

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

QByteArray issuerRecord(const QByteArray &key = "key")
{
    return signature + ledgerString("first") + ledgerString("second") + ledgerString(key);
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
    void issuers();
    void issuerQuirk();
    void keywords();
    void keywordsRefused_data();
    void keywordsRefused();
    void packages();
    void packagesRefused();
    void filesAreSortedByTheirBytes();
    void links();
    void countsReserveNothing();
};

void tst_LedgerTables::issuers()
{
    const QByteArray bytes = segment(u16(2) + issuerRecord("a") + issuerRecord("b"));
    LedgerTables tables;
    const SegmentReading reading = readIssuers(bytes, tables);
    QVERIFY(reading.good);
    QCOMPARE(reading.headCount, quint16(2));
    QCOMPARE(tables.issuers.size(), 2);
    const auto &issuer = tables.issuers.at(1);
    QCOMPARE(issuer.firstLabel.bytes(), QByteArray("first"));
    QCOMPARE(issuer.secondLabel.bytes(), QByteArray("second"));
    QCOMPARE(issuer.publicKey.bytes(), QByteArray("b"));
    QCOMPARE(QByteArray(issuer.signature, 64), signature);

    const QByteArray whole = u16(1) + issuerRecord();
    for (int size = 0; size < whole.size(); ++size) {
        const QByteArray cut = segment(whole.left(size));
        LedgerTables none;
        QVERIFY2(!readIssuers(cut, none).good, qPrintable(QString::number(size)));
        QVERIFY(none.issuers.isEmpty());
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

void tst_LedgerTables::keywords()
{
    LedgerBuilder builder;
    builder.addLanguage("de").addLanguage("en");
    builder.addKeyword(0, "k1", {{1, {QByteArray("tree\0trees", 10)}}, {0, {"Baum", "Holz"}}});
    builder.addKeyword(3, "k2", {{0, {"old"}}, {0, {"new", "newer"}}});
    const QByteArray bytes = segment(builder.segments().at(1).second);
    LedgerTables tables;
    const SegmentReading reading = readKeywords(bytes, tables);
    QVERIFY(reading.good);
    QCOMPARE(reading.headCount, quint16(2));
    QCOMPARE(*reading.recordCount, 2u);
    QCOMPARE(tables.languages.at(1).text(), QString("en"));
    QCOMPARE(tables.keywords.at(0).strings.keys(), QList<int>({0, 1}));
    QCOMPARE(tables.keywords.at(0).strings.value(0).at(1).text(), QString("Holz"));
    QCOMPARE(tables.keywords.at(0).strings.value(1).at(0).length, quint16(10));
    // The later group of a language replaces the earlier.
    QCOMPARE(tables.keywords.at(1).strings.value(0).size(), 2);
    QCOMPARE(tables.keywords.at(1).strings.value(0).at(0).text(), QString("new"));
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

void tst_LedgerTables::packages()
{
    const QByteArray content = ledgerString("{}") + u16(1) + hash + ledgerString("a/b.txt");
    const QByteArray bytes = packageSegment(1, packageHead(1, 2) + content);
    LedgerTables tables;
    tables.issuers.resize(3);
    const SegmentReading reading = readPackages(bytes, tables);
    QVERIFY(reading.good);
    QCOMPARE(reading.headCount, quint16(2));
    QCOMPARE(tables.types.at(1).text(), QString("model:part"));
    const PackageEntry &package = tables.packages.at(0);
    QCOMPARE(int(package.typeIndex), 1);
    QCOMPARE(int(package.issuerIndex), 2);
    QCOMPARE(package.id.text(), QString("id"));
    QCOMPARE(package.manifest.bytes(), QByteArray("{}"));
    QCOMPARE(QByteArray(package.files.hashOf("a/b.txt"), 28), hash);
    QCOMPARE(QByteArray(package.content, package.contentSize), content);
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
    for (const LedgerFile &file : files.sorted()) {
        names.append(file.name.bytes());
        const char first = file.name.length ? file.name.data[0] : 0;
        QCOMPARE(QByteArray(file.hash, 28), QByteArray(28, first));
    }
    QCOMPARE(names, QList<QByteArray>({"", "a", "a/b", "b", "\xc3\xa4"}));
    QCOMPARE(QByteArray(files.hashOf("b"), 28), QByteArray(28, 'b'));
    QVERIFY(!files.hashOf("c"));
    QVERIFY(files.hashOf(""));
    QVERIFY(LedgerFiles().sorted().isEmpty() && !LedgerFiles().hashOf(""));
}

void tst_LedgerTables::links()
{
    LedgerBuilder builder;
    builder.addLink(6, 0x1f, 1, 0xffffffff).addLink(0, 0x10, 2, 3).addLink(1, 0x01, 4, 5);
    const QByteArray whole = builder.segments().at(3).second;
    const QByteArray bytes = segment(whole);
    LedgerTables tables;
    QVERIFY(readLinks(bytes, tables).good);
    QCOMPARE(tables.links.size(), 3);
    QCOMPARE(tables.links.at(0).type, 6);
    QCOMPARE(tables.links.at(0).from, 1);
    QCOMPARE(tables.links.at(0).to, -1);
    QVERIFY(tables.links.at(0).isFromPackage() && tables.links.at(0).isToPackage());
    QVERIFY(!tables.links.at(1).isFromPackage() && tables.links.at(1).isToPackage());
    QVERIFY(tables.links.at(2).isFromPackage() && !tables.links.at(2).isToPackage());

    for (int size = 4; size < whole.size(); ++size) {
        const QByteArray cut = segment(whole.left(size));
        LedgerTables some;
        const SegmentReading reading = readLinks(cut, some);
        QVERIFY(!reading.good);
        QCOMPARE(reading.failedRecord, (size - 4) / 10);
        QCOMPARE(some.links.size(), reading.failedRecord);
    }
}

void tst_LedgerTables::countsReserveNothing()
{
    const QByteArray bytes = segment(u32(0xffffffff) + QByteArray(30, '\0'));
    LedgerTables tables;
    const SegmentReading reading = readLinks(bytes, tables);
    QCOMPARE(*reading.recordCount, 0xffffffffu);
    QCOMPARE(reading.failedRecord, 3);
    QVERIFY(tables.links.capacity() < 100);
}

QTEST_APPLESS_MAIN(tst_LedgerTables)
#include "tst_ledgertables.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerstructure.h"
#include "support/ledgerbuilder.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int linkOffset = 76;

QByteArray emptyLedger()
{
    return LedgerBuilder().build();
}

QByteArray with(QByteArray ledger, int offset, const QByteArray &bytes)
{
    return ledger.replace(offset, bytes.size(), bytes);
}

// The place of table entry `entry`.
int identifierAt(int entry)
{
    return 6 + 8 * entry;
}

int offsetAt(int entry)
{
    return identifierAt(entry) + 4;
}

QVector<LedgerSegment> segments(const QVector<int> &order)
{
    const auto usual = LedgerBuilder().segments();
    QVector<LedgerSegment> result;
    for (const int index : order)
        result.append(usual.at(index));
    return result;
}

} // namespace

class tst_LedgerStructure : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void smallestLedger();
    void accepts_data();
    void accepts();
    void refuses_data();
    void refuses();
    void namesMissingSegments();
    void cutsSegmentsAtTheEnd_data();
    void cutsSegmentsAtTheEnd();
};

void tst_LedgerStructure::smallestLedger()
{
    const QByteArray ledger = emptyLedger();
    QCOMPARE(
        ledger.toHex(), QByteArray("6c646772"
                                   "0100"
                                   "2e697373"
                                   "26000000"
                                   "2e6b7764"
                                   "30000000"
                                   "2e706b67"
                                   "3e000000"
                                   "2e6c6e6b"
                                   "4c000000"
                                   "2e697373"
                                   "02000000"
                                   "0000"
                                   "2e6b7764"
                                   "06000000"
                                   "000000000000"
                                   "2e706b67"
                                   "06000000"
                                   "000000000000"
                                   "2e6c6e6b"
                                   "04000000"
                                   "00000000"));
    const LedgerStructure structure = readLedgerStructure(ledger);
    QCOMPARE(structure.fault, LedgerStructure::NoFault);
    QVERIFY(structure.headerGood);
    QCOMPARE(structure.segments.size(), 4);
    QCOMPARE(structure.segments.value(".iss").constData(), ledger.constData() + 38);
    QCOMPARE(structure.segments.value(".kwd").size(), 14);
    QCOMPARE(structure.segments.value(".lnk").constData(), ledger.constData() + linkOffset);
    QCOMPARE(structure.segments.value(".lnk").size(), 12);
}

void tst_LedgerStructure::accepts_data()
{
    QTest::addColumn<QByteArray>("ledger");
    QTest::newRow("table in another order than the segments")
        << ledgerFile(segments({0, 1, 2, 3}), {".lnk", ".pkg", ".iss", ".kwd"});
    QTest::newRow("segments in another order") << ledgerFile(segments({3, 1, 0, 2}));
    QTest::newRow("both in orders of their own")
        << ledgerFile(segments({2, 0, 3, 1}), {".lnk", ".iss", ".kwd", ".pkg"});
    QTest::newRow("bytes between header and first segment")
        << ledgerFile(segments({0, 1, 2, 3}), {}, {{0, "some bytes"}});
    QTest::newRow("bytes behind the last segment") << emptyLedger() + "more bytes";
}

void tst_LedgerStructure::accepts()
{
    QFETCH(QByteArray, ledger);
    const LedgerStructure structure = readLedgerStructure(ledger);
    QCOMPARE(structure.fault, LedgerStructure::NoFault);
    for (const LedgerSegment &segment : segments({0, 1, 2, 3}))
        QCOMPARE(
            structure.segments.value(segment.first),
            segment.first + u32(quint32(segment.second.size())) + segment.second);
}

void tst_LedgerStructure::refuses_data()
{
    using S = LedgerStructure;
    QTest::addColumn<QByteArray>("ledger");
    QTest::addColumn<int>("fault");
    QTest::addColumn<bool>("headerGood");
    QTest::addColumn<QByteArray>("identifier");
    QTest::addColumn<quint32>("number");
    const QByteArray good = emptyLedger();
    const auto header = [](const char *name, const QByteArray &ledger, S::Fault fault,
                           quint32 number = 0) {
        QTest::newRow(name) << ledger << int(fault) << false << QByteArray() << number;
    };
    const auto table = [](const char *name, const QByteArray &ledger, S::Fault fault,
                          const QByteArray &identifier = {}, quint32 number = 0) {
        QTest::newRow(name) << ledger << int(fault) << true << identifier << number;
    };
    header("one byte", "l", S::TooSmall, 1);
    header("87 bytes", good.left(87), S::TooSmall, 87);
    header("87 bytes of anything", QByteArray(87, 'x'), S::TooSmall, 87);
    header("magic in capitals", with(good, 0, "LDGR"), S::MissingMagic);
    header("magic changed in its last byte", with(good, 3, "s"), S::MissingMagic);
    header("version 1.1", with(good, 5, u8(1)), S::WrongVersion);
    header("version 2.0", with(good, 4, u8(2)), S::WrongVersion);
    header("version 0.0", with(good, 4, u8(0)), S::WrongVersion);

    table("unknown identifier", with(good, identifierAt(2), ".abc"), S::UnknownIdentifier, ".abc");
    table(
        "identifier of NULs", with(good, identifierAt(0), QByteArray(4, '\0')),
        S::UnknownIdentifier, QByteArray(4, '\0'));
    table(
        "offset inside the header", with(good, offsetAt(1), u32(37)), S::OffsetOutOfRange, ".kwd",
        37);
    table(
        "offset without room for the framing", with(good, offsetAt(3), u32(81)),
        S::OffsetOutOfRange, ".lnk", 81);
    table(
        "offset far outside", with(good, offsetAt(3), u32(0xffffffff)), S::OffsetOutOfRange, ".lnk",
        0xffffffff);
    table(
        "offset with just room, nothing there", with(good, offsetAt(3), u32(80)),
        S::NoSegmentAtOffset, ".lnk", 80);
    table(
        "offset of another segment", with(good, offsetAt(0), u32(48)), S::NoSegmentAtOffset, ".iss",
        48);
    table(
        "size that reaches the end", with(good, linkOffset + 4, u32(12)), S::SegmentTooLong, ".lnk",
        12);
    table(
        "size far outside", with(good, linkOffset + 4, u32(0x7fffffff)), S::SegmentTooLong, ".lnk",
        0x7fffffff);
    table(
        "first fault in the order of the table",
        with(with(good, linkOffset + 4, u32(12)), identifierAt(1), ".abc"), S::UnknownIdentifier,
        ".abc");
    table("one segment twice", with(good, identifierAt(3), ".iss" + u32(38)), S::MissingSegments);
    table(
        "a byte between two segments", ledgerFile(segments({0, 1, 2, 3}), {}, {{2, "x"}}),
        S::MisalignedSegments);
    table(
        "a byte before the last segment", ledgerFile(segments({0, 1, 2, 3}), {}, {{3, "x"}}),
        S::MisalignedSegments);
    table("a size one too small", with(good, 48 + 4, u32(5)), S::MisalignedSegments);
    table("a size one too large", with(good, 48 + 4, u32(7)), S::MisalignedSegments);
    // .kwd with a payload of -4 bytes ends at 52 in 32 bits, where .pkg starts inside it.
    const QByteArray overlap =
        with(with(good, 48, ".kwd" + u32(0xfffffffc) + ".pkg" + u32(16)), offsetAt(2), u32(56));
    table("a size that wraps around", overlap, S::MisalignedSegments);
}

void tst_LedgerStructure::refuses()
{
    QFETCH(QByteArray, ledger);
    QFETCH(int, fault);
    QFETCH(bool, headerGood);
    QFETCH(QByteArray, identifier);
    QFETCH(quint32, number);
    const LedgerStructure structure = readLedgerStructure(ledger);
    QCOMPARE(int(structure.fault), fault);
    QCOMPARE(structure.headerGood, headerGood);
    QCOMPARE(structure.identifier, identifier);
    QCOMPARE(structure.number, number);
    QVERIFY(structure.segments.isEmpty());
}

void tst_LedgerStructure::namesMissingSegments()
{
    QByteArray ledger = with(emptyLedger(), identifierAt(3), ".iss" + u32(38));
    QCOMPARE(readLedgerStructure(ledger).missing, QSet<QByteArray>({".lnk"}));
    ledger = with(ledger, identifierAt(1), ".pkg" + u32(62));
    QCOMPARE(readLedgerStructure(ledger).missing, QSet<QByteArray>({".lnk", ".kwd"}));
}

void tst_LedgerStructure::cutsSegmentsAtTheEnd_data()
{
    QTest::addColumn<quint32>("payloadSize");
    QTest::newRow("what is there") << 4u;
    QTest::newRow("seven bytes too many") << 11u;
    QTest::newRow("less than there is") << 0u;
    QTest::newRow("a sum that wraps around to 0") << 0u - linkOffset;
    QTest::newRow("the largest size") << 0xffffffffu;
}

void tst_LedgerStructure::cutsSegmentsAtTheEnd()
{
    QFETCH(quint32, payloadSize);
    const QByteArray ledger = with(emptyLedger(), linkOffset + 4, u32(payloadSize));
    const LedgerStructure structure = readLedgerStructure(ledger);
    QCOMPARE(structure.fault, LedgerStructure::NoFault);
    const QByteArray segment = structure.segments.value(".lnk");
    QVERIFY(segment.constData() + segment.size() <= ledger.constData() + ledger.size());
    QCOMPARE(segment.size(), payloadSize < 4 ? 8 + int(payloadSize) : 12);
}

QTEST_APPLESS_MAIN(tst_LedgerStructure)
#include "tst_ledgerstructure.moc"

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
    void acceptsAnyOrder();
    void refuses_data();
    void refuses();
    void cutsSegmentsAtTheEnd();
};

void tst_LedgerStructure::smallestLedger()
{
    const QByteArray ledger = emptyLedger();
    QCOMPARE(
        ledger.toHex(), QByteArray("6c6467720100"
                                   "2e69737326000000" // .iss, and where it begins
                                   "2e6b776430000000" // .kwd
                                   "2e706b673e000000" // .pkg
                                   "2e6c6e6b4c000000" // .lnk
                                   "2e69737302000000" // .iss, and its size
                                   "0000"
                                   "2e6b776406000000"
                                   "000000000000"
                                   "2e706b6706000000"
                                   "000000000000"
                                   "2e6c6e6b04000000"
                                   "00000000"));
    const LedgerStructure structure = readLedgerStructure(ledger);
    QCOMPARE(structure.fault, LedgerStructure::NoFault);
    QVERIFY(structure.headerGood);
    QCOMPARE(structure.segments.size(), 4);
    QCOMPARE(structure.segments.value(".iss").constData(), ledger.constData() + 38);
}

void tst_LedgerStructure::acceptsAnyOrder()
{
    const auto usual = segments({0, 1, 2, 3});
    for (const QByteArray &ledger :
         {ledgerFile(usual, {".lnk", ".pkg", ".iss", ".kwd"}), ledgerFile(segments({3, 1, 0, 2})),
          ledgerFile(segments({2, 0, 3, 1}), {".lnk", ".iss", ".kwd", ".pkg"}),
          ledgerFile(usual, {}, {{0, "bytes before the first segment"}}),
          emptyLedger() + "bytes behind the last"}) {
        const LedgerStructure structure = readLedgerStructure(ledger);
        QCOMPARE(structure.fault, LedgerStructure::NoFault);
        for (const auto &[identifier, payload] : usual)
            QCOMPARE(
                structure.segments.value(identifier),
                identifier + u32(quint32(payload.size())) + payload);
    }
}

void tst_LedgerStructure::refuses_data()
{
    using S = LedgerStructure;
    QTest::addColumn<QByteArray>("ledger");
    QTest::addColumn<int>("fault");
    QTest::addColumn<QByteArray>("identifier");
    QTest::addColumn<quint32>("number");
    const QByteArray good = emptyLedger();
    const auto row = [](const char *name, const QByteArray &ledger, S::Fault fault,
                        const QByteArray &identifier = {}, quint32 number = 0) {
        QTest::newRow(name) << ledger << int(fault) << identifier << number;
    };
    row("one byte", "l", S::TooSmall, {}, 1);
    row("87 bytes", good.left(87), S::TooSmall, {}, 87);
    row("magic in capitals", with(good, 0, "LDGR"), S::MissingMagic);
    row("magic changed in its last byte", with(good, 3, "s"), S::MissingMagic);
    row("version 1.1", with(good, 5, u8(1)), S::WrongVersion);
    row("version 2.0", with(good, 4, u8(2)), S::WrongVersion);
    row("unknown identifier", with(good, identifierAt(2), ".abc"), S::UnknownIdentifier, ".abc");
    row("offset inside the header", with(good, offsetAt(1), u32(37)), S::OffsetOutOfRange, ".kwd",
        37);
    row("offset without room for the framing", with(good, offsetAt(3), u32(81)),
        S::OffsetOutOfRange, ".lnk", 81);
    row("offset far outside", with(good, offsetAt(3), u32(0xffffffff)), S::OffsetOutOfRange, ".lnk",
        0xffffffff);
    row("offset with just room, nothing there", with(good, offsetAt(3), u32(80)),
        S::NoSegmentAtOffset, ".lnk", 80);
    row("offset of another segment", with(good, offsetAt(0), u32(48)), S::NoSegmentAtOffset, ".iss",
        48);
    const QByteArray tooLong = with(good, linkOffset + 4, u32(12));
    row("size that reaches the end", tooLong, S::SegmentTooLong, ".lnk", 12);
    row("first fault in the order of the table", with(tooLong, identifierAt(1), ".abc"),
        S::UnknownIdentifier, ".abc");
    row("one segment twice", with(good, identifierAt(3), ".iss" + u32(38)), S::MissingSegments);
    row("a byte before the last segment", ledgerFile(segments({0, 1, 2, 3}), {}, {{3, "x"}}),
        S::MisalignedSegments);
    row("a size one too small", with(good, 48 + 4, u32(5)), S::MisalignedSegments);
    row("a size one too large", with(good, 48 + 4, u32(7)), S::MisalignedSegments);
    // .kwd with a payload of -4 bytes ends at 52 in 32 bits, where .pkg starts inside it.
    const QByteArray overlap =
        with(with(good, 48, ".kwd" + u32(0xfffffffc) + ".pkg" + u32(16)), offsetAt(2), u32(56));
    row("a size that wraps around", overlap, S::MisalignedSegments);
}

void tst_LedgerStructure::refuses()
{
    QFETCH(QByteArray, ledger);
    const LedgerStructure structure = readLedgerStructure(ledger);
    QTEST(int(structure.fault), "fault");
    QTEST(structure.identifier, "identifier");
    QTEST(structure.number, "number");
    QVERIFY(structure.segments.isEmpty());
    if (structure.fault == LedgerStructure::MissingSegments)
        QCOMPARE(structure.missing, QSet<QByteArray>({".lnk"}));
}

void tst_LedgerStructure::cutsSegmentsAtTheEnd()
{
    const QByteArray good = emptyLedger();
    for (const quint32 size : {0u, 4u, 11u, 0u - linkOffset, 0xffffffffu}) {
        const QByteArray ledger = with(good, linkOffset + 4, u32(size));
        const LedgerStructure structure = readLedgerStructure(ledger);
        QCOMPARE(structure.fault, LedgerStructure::NoFault);
        QCOMPARE(structure.segments.value(".lnk").size(), 8 + int(qMin(size, 4u)));
    }
}

QTEST_APPLESS_MAIN(tst_LedgerStructure)
#include "tst_ledgerstructure.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerloader.h"
#include "sources/ledgerstructure.h"
#include "sources/verifiedsignatures.h"
#include "support/ledgerbuilder.h"
#include "support/logrecorder.h"

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
    QTest::addColumn<QByteArray>("ledger");
    QTest::addColumn<QString>("line");
    const QByteArray good = emptyLedger();
    const auto row = [](const char *name, const QByteArray &ledger, const char *line) {
        QTest::newRow(name) << ledger << QString(line);
    };
    row("one byte", "l", "Invalid or corrupted ledger data: Size of 1 is below minimum size");
    row("87 bytes", good.left(87),
        "Invalid or corrupted ledger data: Size of 87 is below minimum size");
    const char *const magic = "Ledger data missing magic bytes \"ldgr\"";
    row("magic in capitals", with(good, 0, "LDGR"), magic);
    row("magic changed in its last byte", with(good, 3, "s"), magic);
    const char *const version = "Ledger version mismatch, must be 1.0";
    row("version 1.1", with(good, 5, u8(1)), version);
    row("version 2.0", with(good, 4, u8(2)), version);
    const char *const unknown = "Invalid offset table entry \".abc\"";
    const QByteArray tooLong = with(good, linkOffset + 4, u32(12));
    row("unknown identifier", with(good, identifierAt(2), ".abc"), unknown);
    row("first fault in the order of the table", with(tooLong, identifierAt(1), ".abc"), unknown);
    row("offset inside the header", with(good, offsetAt(1), u32(37)),
        "Invalid offset 37 for offset able entry \".kwd\"");
    row("offset without room for the framing", with(good, offsetAt(3), u32(81)),
        "Invalid offset 81 for offset able entry \".lnk\"");
    row("offset far outside", with(good, offsetAt(3), u32(0xffffffff)),
        "Invalid offset 4294967295 for offset able entry \".lnk\"");
    row("offset with just room, nothing there", with(good, offsetAt(3), u32(80)),
        "Invalid offset 80 for offset able entry \".lnk\" (No such section at that offset)");
    row("offset of another segment", with(good, offsetAt(0), u32(48)),
        "Invalid offset 48 for offset able entry \".iss\" (No such section at that offset)");
    row("size that reaches the end", tooLong, "Segment \".lnk\" has out of bounds section size 12");
    row("one segment twice", with(good, identifierAt(3), ".iss" + u32(38)),
        "Incomplete ledger data, missing segments: QSet(\".lnk\")");
    const char *const misaligned = "Invalid ledger structure, misaligned segments";
    row("a byte before the last segment", ledgerFile(segments({0, 1, 2, 3}), {}, {{3, "x"}}),
        misaligned);
    row("a size one too small", with(good, 48 + 4, u32(5)), misaligned);
    row("a size one too large", with(good, 48 + 4, u32(7)), misaligned);
    // .kwd with a payload of -4 bytes ends at 52 in 32 bits, where .pkg starts inside it.
    const QByteArray overlap = with(good, 48, ".kwd" + u32(0xfffffffc) + ".pkg" + u32(16));
    row("a size that wraps around", with(overlap, offsetAt(2), u32(56)), misaligned);
}

void tst_LedgerStructure::refuses()
{
    QFETCH(QByteArray, ledger);
    QFETCH(QString, line);
    QVERIFY(readLedgerStructure(ledger).segments.isEmpty());
    LogRecorder log("norvak.packageserver.ledger");
    VerifiedSignatures known;
    loadLedger(ledger, {}, known);
    QStringList lines = log.lines();
    const bool isHeaderGood = ledger.left(6) == emptyLedger().left(6) && ledger.size() > 87;
    if (isHeaderGood)
        QCOMPARE(lines.takeFirst(), QString("debug: Basic header verification OK"));
    QVERIFY(lines.takeLast().startsWith("debug: Ledger parsing took"));
    QCOMPARE(
        lines, (QStringList{"critical: " + line, "critical: Parsing of package ledger failed"}));
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

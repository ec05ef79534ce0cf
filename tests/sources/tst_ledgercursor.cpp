// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgercursor.h"
#include "support/ledgerbuilder.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

const QByteArray framing = ".pkg" + u32(0);

} // namespace

class tst_LedgerCursor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsLittleEndianBehindTheFraming();
    void failedReadStays();
    void okIsNotSticky();
    void bytesLeaveOkAlone();
    void stringViewsAreNotCopies();
    void stringPastTheEnd();
    void stringWithoutItsLength();
    void segmentShorterThanItsFraming();
};

void tst_LedgerCursor::readsLittleEndianBehindTheFraming()
{
    const QByteArray segment = framing
                               + QByteArray::fromHex("fe"
                                                     "0201"
                                                     "ffeeddcc");
    LedgerCursor cursor(segment);
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8(0xfe));
    QCOMPARE(cursor.u16(), quint16(0x0102));
    QCOMPARE(cursor.u32(), 0xccddeeffu);
    QVERIFY(cursor.ok());
    QCOMPARE(cursor.position(), segment.constData() + segment.size());
}

void tst_LedgerCursor::failedReadStays()
{
    const QByteArray segment = framing + QByteArray::fromHex("010203");
    LedgerCursor cursor(segment);
    QCOMPARE(cursor.u32(), 0u);
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u16(), quint16(0x0201));
    QVERIFY(cursor.ok());
    QCOMPARE(cursor.u16(), quint16(0));
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8(3));
}

void tst_LedgerCursor::okIsNotSticky()
{
    const QByteArray segment = framing
                               + QByteArray::fromHex("ffff"
                                                     "0000");
    LedgerCursor cursor(segment);
    QVERIFY(cursor.string().isNull());
    QVERIFY(!cursor.ok());
    QVERIFY(!cursor.string().isNull());
    QVERIFY(cursor.ok());
}

void tst_LedgerCursor::bytesLeaveOkAlone()
{
    const QByteArray segment = framing + "abcd";
    LedgerCursor cursor(segment);
    QCOMPARE(cursor.bytes(3), segment.constData() + framing.size());
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8('d'));
    QCOMPARE(cursor.bytes(1), nullptr);
    QVERIFY(cursor.ok());
    QVERIFY(cursor.bytes(0));
}

void tst_LedgerCursor::stringViewsAreNotCopies()
{
    const QByteArray segment = framing + ledgerString("w\xc3\xb6rt") + ledgerString("");
    LedgerCursor cursor(segment);
    const LedgerString word = cursor.string();
    QCOMPARE(word.data, segment.constData() + framing.size() + 2);
    QCOMPARE(word.bytes(), QByteArray("w\xc3\xb6rt"));
    QCOMPARE(word.text(), QString::fromUtf8("w\xc3\xb6rt"));
    const LedgerString empty = cursor.string();
    QVERIFY(cursor.ok() && !empty.isNull());
    QCOMPARE(empty.length, quint16(0));
}

void tst_LedgerCursor::stringPastTheEnd()
{
    const QByteArray segment = framing + u16(3) + "ab";
    LedgerCursor cursor(segment);
    const LedgerString cut = cursor.string();
    QVERIFY(cut.isNull() && !cursor.ok());
    QCOMPARE(cut.length, quint16(0));
    QCOMPARE(cut.text(), QString());
    QCOMPARE(cursor.u16(), quint16('a' | 'b' << 8)); // behind the length, in front of the bytes
}

void tst_LedgerCursor::stringWithoutItsLength()
{
    const QByteArray segment = framing + "x";
    LedgerCursor cursor(segment);
    QCOMPARE(cursor.string().length, quint16(0));
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8('x'));
}

void tst_LedgerCursor::segmentShorterThanItsFraming()
{
    for (const QByteArray &segment : {QByteArray(), QByteArray(".pk"), framing}) {
        LedgerCursor cursor(segment);
        QCOMPARE(cursor.u8(), quint8(0));
        QVERIFY(!cursor.ok());
        QCOMPARE(cursor.bytes(1), nullptr);
    }
}

QTEST_APPLESS_MAIN(tst_LedgerCursor)
#include "tst_ledgercursor.moc"

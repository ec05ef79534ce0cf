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
    void failedReadStaysAndIsForgotten();
    void stringsAreViews();
    void bytesLeaveOkAlone();
    void segmentShorterThanItsFraming();
};

void tst_LedgerCursor::readsLittleEndianBehindTheFraming()
{
    const QByteArray segment = framing + QByteArray::fromHex("fe0201ffeeddcc");
    LedgerCursor cursor(segment);
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8(0xfe));
    QCOMPARE(cursor.u16(), quint16(0x0102));
    QCOMPARE(cursor.u32(), 0xccddeeffu);
    QVERIFY(cursor.ok());
    QCOMPARE(cursor.position(), segment.constData() + segment.size());
}

void tst_LedgerCursor::failedReadStaysAndIsForgotten()
{
    const QByteArray segment = framing + QByteArray::fromHex("010203");
    LedgerCursor cursor(segment);
    QCOMPARE(cursor.u32(), 0u);
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u16(), quint16(0x0201));
    QVERIFY(cursor.ok());
    QCOMPARE(cursor.string().length, quint16(0)); // not even its length is there
    QVERIFY(!cursor.ok());
    QCOMPARE(cursor.u8(), quint8(3));
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

void tst_LedgerCursor::stringsAreViews()
{
    const QByteArray segment =
        framing + ledgerString("w\xc3\xb6rt") + ledgerString("") + u16(3) + "ab";
    LedgerCursor cursor(segment);
    const LedgerString word = cursor.string();
    QCOMPARE(word.data, segment.constData() + framing.size() + 2);
    QCOMPARE(word.text(), QString::fromUtf8("w\xc3\xb6rt"));
    const LedgerString empty = cursor.string();
    QVERIFY(cursor.ok() && !empty.isNull());
    QCOMPARE(empty.length, quint16(0));
    const LedgerString cut = cursor.string();
    QVERIFY(cut.isNull() && !cursor.ok());
    QCOMPARE(cut.length, quint16(0));
    QCOMPARE(cut.text(), QString());
    QCOMPARE(cursor.u16(), quint16('a' | 'b' << 8)); // behind the length, in front of the bytes
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

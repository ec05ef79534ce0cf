// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/outputqueue.h"

#include <QBuffer>
#include <QtTest>

using nk::pm::OutputQueue;

namespace {

std::unique_ptr<QBuffer> body(const QByteArray &bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

} // namespace

class TestOutputQueue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void piecesInOrder_data();
    void piecesInOrder();
    void answersAreCountedUntilWhollyTaken();
    void onlyTheAnnouncedLengthIsSent();
    void shortBodyDropsWhatFollows_data();
    void shortBodyDropsWhatFollows();
};

void TestOutputQueue::piecesInOrder_data()
{
    QTest::addColumn<int>("pieceSize");
    for (int size : {1, 2, 3, 4, 5, 9, 10, 11, 1000})
        QTest::addRow("pieces of %d", size) << size;
}

void TestOutputQueue::piecesInOrder()
{
    QFETCH(int, pieceSize);
    OutputQueue queue;
    queue.append("head1;", body("body1;"), 6);
    queue.append("head2;");
    queue.append("head3;", body(""), 0);
    queue.append("head4;", body("body4;"), 6);
    const QByteArray all = "head1;body1;head2;head3;head4;body4;";

    QByteArray taken;
    while (!queue.isEmpty()) {
        const QByteArray piece = queue.take(pieceSize);
        QCOMPARE(piece.size(), std::min(pieceSize, all.size() - taken.size()));
        taken += piece;
    }
    QCOMPARE(taken, all);
    QVERIFY(queue.take(pieceSize).isEmpty());
    QVERIFY(!queue.fellShort());
}

void TestOutputQueue::answersAreCountedUntilWhollyTaken()
{
    OutputQueue queue;
    queue.append("ab", body("cd"), 2);
    queue.append("e");
    QCOMPARE(queue.count(), 2);
    queue.take(3);
    QCOMPARE(queue.count(), 2);
    queue.take(1);
    QCOMPARE(queue.count(), 1);
    queue.take(1);
    QVERIFY(queue.isEmpty());
}

void TestOutputQueue::onlyTheAnnouncedLengthIsSent()
{
    OutputQueue queue;
    queue.append("h", body("body that has grown"), 4);
    queue.append("next");
    QCOMPARE(queue.take(100), QByteArray("hbodynext"));
}

void TestOutputQueue::shortBodyDropsWhatFollows_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("open");
    QTest::newRow("shorter than announced") << QByteArray("bod") << true;
    QTest::newRow("empty") << QByteArray() << true;
    QTest::newRow("never opened") << QByteArray() << false;
}

void TestOutputQueue::shortBodyDropsWhatFollows()
{
    QFETCH(QByteArray, bytes);
    QFETCH(bool, open);
    OutputQueue queue;
    auto device = body(bytes);
    if (!open)
        device->close();
    queue.append("h", std::move(device), 4);
    queue.append("next");
    QCOMPARE(queue.take(100), "h" + bytes);
    QVERIFY(queue.fellShort());
    QVERIFY(queue.isEmpty());
}

QTEST_GUILESS_MAIN(TestOutputQueue)
#include "tst_outputqueue.moc"

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
    void piecesInOrder();
    void answersAreCountedUntilWhollyTaken();
    void shortBodyDropsWhatFollows();
};

void TestOutputQueue::piecesInOrder()
{
    const QByteArray all = "head1;body1;head2;head3;head4;body4;";
    for (const int pieceSize : {1, 2, 3, 4, 5, 9, 10, 11, 1000}) {
        OutputQueue queue;
        queue.append("head1;", body("body1; and what has grown"), 6);
        queue.append("head2;");
        queue.append("head3;", body(""), 0);
        queue.append("head4;", body("body4;"), 6);
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
}

void TestOutputQueue::answersAreCountedUntilWhollyTaken()
{
    OutputQueue queue;
    queue.append("ab", body("cd"), 2);
    queue.append("e");
    for (const int count : {2, 2, 2, 2}) { // before each byte
        QCOMPARE(queue.count(), count);
        queue.take(1);
    }
    QCOMPARE(queue.count(), 1);
    queue.take(1);
    QVERIFY(queue.isEmpty());
}

void TestOutputQueue::shortBodyDropsWhatFollows()
{
    for (const char *bytes : {"bod", "", static_cast<const char *>(nullptr)}) {
        OutputQueue queue;
        auto device = body(bytes);
        if (!bytes)
            device->close(); // a file that couldn't be opened
        queue.append("h", std::move(device), 4);
        queue.append("next");
        QCOMPARE(queue.take(100), "h" + QByteArray(bytes));
        QVERIFY(queue.fellShort());
        QVERIFY(queue.isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestOutputQueue)
#include "tst_outputqueue.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/directoryproxy.h"
#include "support/processinfo.h"

#include <QFile>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

using nk::pm::test::DirectoryProxy;
using nk::pm::test::peakMemory;

// Freed memory that the sanitizer holds back would hide what the proxy needs itself.
extern "C" Q_DECL_EXPORT const char *__asan_default_options()
{
    return "quarantine_size_mb=1";
}

namespace {

constexpr qint64 mebibyte = 1024 * 1024;
constexpr qint64 fileSize = 2048 * mebibyte;

} // namespace

class TestFileProxyLarge : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void twoGibibytesInFlatMemory();
};

void TestFileProxyLarge::twoGibibytesInFlatMemory()
{
    if (peakMemory() == 0)
        QSKIP("The system doesn't tell how much memory a process had");
    QTemporaryDir directory;
    QFile file(directory.filePath("large"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.resize(fileSize) && file.seek(fileSize - 3) && file.write("end") == 3);
    file.close();
    DirectoryProxy proxy(directory.path());
    const qint64 before = peakMemory();

    qint64 received = 0;
    QByteArray head, end;
    QTcpSocket client;
    client.setReadBufferSize(mebibyte);
    connect(&client, &QTcpSocket::readyRead, this, [&] {
        const QByteArray bytes = client.readAll();
        if (received == 0)
            head = bytes.left(bytes.indexOf("\r\n\r\n") + 4);
        received += bytes.size();
        end = (end + bytes).right(3);
        if (received >= head.size() + fileSize)
            QTestEventLoop::instance().exitLoop();
    });
    client.connectToHost(QHostAddress::LocalHost, proxy.server()->serverPort());
    client.write("GET " + proxy.url("large").path().toLatin1() + " HTTP/1.1\r\n\r\n");

    QTestEventLoop::instance().enterLoop(600);
    QVERIFY(!QTestEventLoop::instance().timeout());
    QVERIFY(head.contains("Content-Length: 2147483648\r\n"));
    QCOMPARE(received, head.size() + fileSize);
    QCOMPARE(end, QByteArray("end"));
    const qint64 used = peakMemory() - before;
    QVERIFY2(used < 16 * mebibyte, QByteArray::number(used));
}

QTEST_GUILESS_MAIN(TestFileProxyLarge)
#include "tst_fileproxylarge.moc"

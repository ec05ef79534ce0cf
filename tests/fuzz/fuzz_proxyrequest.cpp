// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"
#include "proxy/fileproxyconnection.h"

#include <norvak/locations.h>

#include <QTcpSocket>

#include <algorithm>

namespace nk::pm::fuzz {

namespace {

/// A connected socket without a network: gives what it is fed, takes what is written.
class FedSocket : public QTcpSocket
{
public:
    FedSocket() { open(QIODevice::ReadWrite); }

    void feed(const QByteArray &bytes)
    {
        m_input += bytes;
        Q_EMIT readyRead();
    }
    const QByteArray &written() const { return m_written; }

    qint64 bytesAvailable() const override { return m_input.size() + QIODevice::bytesAvailable(); }
    bool canReadLine() const override { return m_input.contains('\n') || QIODevice::canReadLine(); }
    qint64 bytesToWrite() const override { return 0; }
    bool waitForReadyRead(int) override { return false; }
    void close() override { QIODevice::close(); }

protected:
    qint64 readData(char *data, qint64 maxSize) override
    {
        const int size = int(std::min<qint64>(maxSize, m_input.size()));
        std::copy_n(m_input.cbegin(), size, data);
        m_input.remove(0, size);
        return size;
    }
    qint64 writeData(const char *data, qint64 size) override
    {
        m_written.append(data, int(size));
        return size;
    }

private:
    QByteArray m_input;
    QByteArray m_written;
};

/// Ends a piece that comes over the network at once.
constexpr char pieceEnd = '\xff';

QString smallFile()
{
    static const QString path = [] {
        const QString file = nk::Locations::dataLocation().filePath("file");
        writeInput(file, "some content");
        return file;
    }();
    return path;
}

void answer(FileProxyConnection &connection, const QUrl &url)
{
    require(
        connection.state() == FileProxyConnection::AwaitingResponse, "A request waits for nothing");
    const QString path = url.path();
    if (path.endsWith("missing"))
        connection.sendResponse(FileProxyConnection::NotFound, QString());
    else if (!path.endsWith("later"))
        connection.sendResponse(FileProxyConnection::Ok, smallFile());
}

} // namespace

void runOnce(const QByteArray &input)
{
    auto *socket = new FedSocket;
    FileProxyConnection connection(socket);
    int requests = 0;
    QObject::connect(
        &connection, &FileProxyConnection::fileRequested, &connection, [&](const QUrl &url) {
            ++requests;
            answer(connection, url);
        });
    for (const QByteArray &piece : input.split(pieceEnd))
        socket->feed(piece);
    const bool isClosing = socket->written().contains("Connection: close");
    require(isClosing || !socket->canReadLine(), "A whole line is left unread");
    require(socket->written().count("HTTP/1.1 4") <= requests + 1, "There are too many answers");
    require(
        socket->written().isEmpty() || socket->written().startsWith("HTTP/1.1 "),
        "An answer has no status line");
}

QVector<Seed> seeds()
{
    const QByteArray get = "GET /token/nora/scene.bin HTTP/1.1\r\nHost: localhost:4711\r\n\r\n";
    return {
        {"get", get},
        {"head", "HEAD /token/nora/scene.bin HTTP/1.1\r\n\r\n"},
        {"pipelined", get + get + get},
        {"pieces", QByteArray(get).replace(' ', " \xff").replace('\r', "\r\xff")},
        {"missing", "GET /token/missing HTTP/1.1\r\n\r\n" + get},
        {"later", "GET /token/later HTTP/1.1\r\n\r\n" + get},
        {"method", "POST / HTTP/1.1\r\nContent-Length: 4\r\n\r\nbody"},
        {"version", "GET / HTTP/1.0\r\n\r\n"},
        {"blanks", "GET  /a b%20c?d#e  HTTP/1.1\r\n:\r\nno colon\r\n\r\n"},
        {"long line", "GET /" + QByteArray(5000, 'a') + " HTTP/1.1\r\n\r\n"},
        {"long header", "GET / HTTP/1.1\r\nA: " + QByteArray(9000, 'b') + "\r\n\r\n"},
    };
}

} // namespace nk::pm::fuzz

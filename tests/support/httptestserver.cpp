// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/httptestserver.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <utility>

#include <sys/socket.h>

namespace nk::pm::test {

HttpTestAnswer HttpTestAnswer::of(int status, const QByteArray &body, const QByteArray &headers)
{
    return raw(
        "HTTP/1.1 " + QByteArray::number(status) + " Status\r\nContent-Length: "
        + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
}

HttpTestAnswer HttpTestAnswer::redirect(const QByteArray &location, int status)
{
    return of(status, "Elsewhere.", "Location: " + location + "\r\n");
}

HttpTestAnswer HttpTestAnswer::chunked(const QByteArray &body, int chunkSize)
{
    QByteArray bytes = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";
    for (int i = 0; i < body.size(); i += chunkSize) {
        const QByteArray chunk = body.mid(i, chunkSize);
        bytes += QByteArray::number(chunk.size(), 16) + "\r\n" + chunk + "\r\n";
    }
    return raw(bytes + "0\r\n\r\n");
}

HttpTestAnswer HttpTestAnswer::raw(const QByteArray &bytes)
{
    HttpTestAnswer answer;
    answer.bytes = bytes;
    return answer;
}

HttpTestAnswer HttpTestAnswer::silence()
{
    HttpTestAnswer answer;
    answer.keepsSilent = true;
    return answer;
}

HttpTestAnswer HttpTestAnswer::cutAt(int size, Ending ending, int delay) const
{
    HttpTestAnswer answer(*this);
    answer.bytes.truncate(size);
    answer.ending = ending;
    answer.endingDelay = delay;
    return answer;
}

HttpTestAnswer HttpTestAnswer::inPieces(int size) const
{
    HttpTestAnswer answer(*this);
    answer.pieceSize = size;
    return answer;
}

HttpTestServer::HttpTestServer(const Handler &handler)
    : m_handler(handler)
{
    setMaxPendingConnections(1000);
    connect(this, &QTcpServer::newConnection, this, &HttpTestServer::accept);
    if (!listen(QHostAddress::LocalHost))
        qFatal("The test server can't listen: %s", qPrintable(errorString()));
}

HttpTestServer::HttpTestServer(const HttpTestAnswer &answer)
    : HttpTestServer([answer](const HttpTestRequest &) { return answer; })
{}

QUrl HttpTestServer::url(const QString &path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path));
}

int HttpTestServer::heldCount() const
{
    return int(std::count_if(m_held.begin(), m_held.end(), [](const QPointer<QTcpSocket> &socket) {
        return socket && socket->state() == QAbstractSocket::ConnectedState;
    }));
}

void HttpTestServer::answerHeld(const HttpTestAnswer &answered)
{
    const auto held = std::exchange(m_held, {});
    for (const QPointer<QTcpSocket> &socket : held) {
        if (socket)
            answer(socket, answered);
    }
}

void HttpTestServer::accept()
{
    while (QTcpSocket *socket = nextPendingConnection()) {
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    }
}

// Only requests without a body come here, so that a head ends each of them.
void HttpTestServer::read(QTcpSocket *socket)
{
    const QByteArray pending = socket->peek(64 * 1024);
    const int end = pending.indexOf("\r\n\r\n");
    if (end < 0)
        return;
    socket->skip(end + 4);
    QList<QByteArray> lines = pending.left(end).replace("\r\n", "\n").split('\n');
    const QList<QByteArray> words = lines.takeFirst().split(' ');
    HttpTestRequest request{words.value(0), words.value(1), {}};
    for (const QByteArray &line : qAsConst(lines)) {
        const int colon = line.indexOf(':');
        request.headers.insert(line.left(colon).toLower(), line.mid(colon + 1).trimmed());
    }
    m_requests.append(request);
    answer(socket, m_handler(request));
    if (socket->bytesAvailable() > 0)
        read(socket);
}

void HttpTestServer::answer(QTcpSocket *socket, const HttpTestAnswer &answered)
{
    if (answered.keepsSilent) {
        m_held.append(socket);
        return;
    }
    const int size = answered.pieceSize > 0 ? answered.pieceSize : answered.bytes.size();
    socket->write(answered.bytes.left(size));
    if (size < answered.bytes.size()) {
        socket->flush();
        HttpTestAnswer rest(answered);
        rest.bytes.remove(0, size);
        QTimer::singleShot(0, socket, [this, socket, rest] { answer(socket, rest); });
    } else if (answered.ending != HttpTestAnswer::StaysOpen) {
        QTimer::singleShot(answered.endingDelay, socket, [this, socket, how = answered.ending] {
            end(socket, how);
        });
    }
}

void HttpTestServer::end(QTcpSocket *socket, HttpTestAnswer::Ending ending)
{
    if (ending == HttpTestAnswer::Resets) {
        while (socket->flush()) {
        }
        const linger noTime{1, 0};
        ::setsockopt(
            int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER, &noTime, sizeof noTime);
        socket->abort();
    } else {
        socket->disconnectFromHost();
    }
}

} // namespace nk::pm::test

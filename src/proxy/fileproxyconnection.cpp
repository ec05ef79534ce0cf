// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/fileproxyconnection.h"

#include "proxy/httpresponse.h"
#include "proxy/proxyhostcheck.h"

#include <QFile>
#include <QScopedValueRollback>
#include <QTcpSocket>
#include <QTimerEvent>

#include <algorithm>
#include <chrono>

namespace nk::pm {

namespace {

// All in bytes.
constexpr int maxLineSize = 4096; // with the zero that QIODevice counts in
constexpr int readBufferSize = 64 * 1024;
constexpr int smallFileSize = 16 * 1024;
constexpr int pieceSize = 128 * 1024;
/// With less than this in its buffer the socket gets the next piece.
constexpr int lowWater = 128 * 1024;

/// A client that sends requests and doesn't take the answers is not read from beyond so many
/// answers, each of which may hold an open file.
constexpr int maxOpenAnswers = 4;

/// A connection with unread input that is closed is reset, and the client may lose the answer that
/// says why. So input is dropped until none has come for this time.
constexpr std::chrono::milliseconds lingerTime{50};
/// A client that never stops sending has so long, and one that takes nothing so long for each
/// piece.
constexpr std::chrono::milliseconds longestLinger{2000};

int nextConnectionId()
{
    static int next = 0;
    return next++;
}

} // namespace

FileProxyConnection::FileProxyConnection(QTcpSocket *socket, QObject *parent)
    : QObject(parent)
    , m_connectionId(nextConnectionId())
    , m_socket(socket)
{
    socket->setParent(this);
    socket->setReadBufferSize(readBufferSize);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(socket, &QTcpSocket::readyRead, this, &FileProxyConnection::read);
    connect(socket, &QTcpSocket::bytesWritten, this, &FileProxyConnection::handleBytesWritten);
    connect(socket, &QTcpSocket::disconnected, this, &FileProxyConnection::handleDisconnect);
    // For bytes that came before the connection to readyRead().
    QMetaObject::invokeMethod(this, "read", Qt::QueuedConnection);
}

FileProxyConnection::~FileProxyConnection() = default;

void FileProxyConnection::sendResponse(int code, const QString &filePath)
{
    if (m_state != AwaitingResponse || m_closing || !m_socket)
        return;
    m_isAnswered = true;
    if (code == Ok)
        sendFile(filePath);
    else
        sendPhrase(code);
    flush();
}

bool FileProxyConnection::isIdle() const
{
    const bool waits = m_state == AwaitingResponse && !m_isAnswered && !m_closing;
    return !waits && m_output.isEmpty() && m_socket && m_socket->bytesToWrite() == 0;
}

void FileProxyConnection::end()
{
    if (m_socket)
        m_socket->abort();
}

void FileProxyConnection::read()
{
    if (m_reading || !m_socket)
        return;
    const QScopedValueRollback<bool> guard(m_reading, true);
    while (!m_closing && m_output.count() < maxOpenAnswers && hasLine())
        readLine(m_socket->readLine(maxLineSize));
    if (m_socket && m_closing)
        dropInput();
    if (m_socket)
        resumeReading();
}

void FileProxyConnection::handleDisconnect()
{
    if (!m_socket)
        return;
    m_socket->disconnect(this);
    m_socket->close();
    m_socket->deleteLater();
    m_socket = nullptr;
    m_linger.stop();
    m_output.clear();
    Q_EMIT closed();
}

void FileProxyConnection::writeErrorResponse(ResponseCode responseCode, bool close)
{
    const QByteArray phrase = reasonPhrase(responseCode);
    m_output.append(
        responseHead(
            responseCode, {{"Connection", close ? "close" : "keep-alive"},
                           {"Content-Length", QByteArray::number(phrase.size())}})
        + phrase);
    if (close)
        m_closing = true;
    else
        m_state = ReadingRequestLine;
    flush();
}

/// A line that alone fills the read buffer can't wait there for its end. Its parts are lines
/// anyway.
bool FileProxyConnection::hasLine() const
{
    return m_socket && (m_socket->canReadLine() || m_socket->bytesAvailable() >= readBufferSize);
}

/// The socket stops reading when its buffer is full. Of its own it starts again only once the
/// buffer was emptied, but the start of a line may stay in it: then only a change of the size
/// helps.
void FileProxyConnection::resumeReading()
{
    if (m_socket->bytesAvailable() >= readBufferSize)
        return;
    m_socket->setReadBufferSize(readBufferSize + 1);
    m_socket->setReadBufferSize(readBufferSize);
}

void FileProxyConnection::dropInput()
{
    const bool isLingering = !m_lingerEnd.isForever();
    if (m_socket->skip(m_socket->bytesAvailable()) > 0 && isLingering)
        m_linger.start(
            int(std::min<qint64>(lingerTime.count(), m_lingerEnd.remainingTime())), this);
}

void FileProxyConnection::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_linger.timerId())
        return;
    if (m_lingerEnd.isForever() || m_lingerEnd.hasExpired()) {
        end();
        return;
    }
    // On a busy thread the timer may come before input that is there already.
    if (m_socket->waitForReadyRead(0) || !m_socket)
        return;
    m_linger.stop();
    m_socket->close();
}

void FileProxyConnection::readLine(const QByteArray &line)
{
    if (!m_fault) {
        switch (m_state) {
        case ReadingRequestLine:
            readRequestLine(line);
            break;
        case ReadingHeaders:
            readHeaderLine(line);
            break;
        case AwaitingResponse:
            m_fault = BadRequest;
            break;
        }
    }
    if (m_fault && line.endsWith('\n'))
        writeErrorResponse(*m_fault, true);
}

void FileProxyConnection::readRequestLine(const QByteArray &line)
{
    switch (m_request.readRequestLine(line)) {
    case HttpRequest::NoFault:
        m_state = ReadingHeaders;
        break;
    case HttpRequest::Malformed:
        m_fault = BadRequest;
        break;
    case HttpRequest::UnknownMethod:
        m_fault = MethodNotAllowed;
        break;
    }
}

void FileProxyConnection::readHeaderLine(const QByteArray &line)
{
    if (!m_request.readHeaderLine(line))
        return;
    if (proxyHostCheck() && !m_request.isForLoopback()) {
        m_fault = BadRequest;
        return;
    }
    m_state = AwaitingResponse;
    m_isAnswered = false;
    Q_EMIT fileRequested(QUrl(QString::fromLatin1(requestTarget()), QUrl::TolerantMode));
}

/// A small file is read and closed at once; of a larger one the beginning, for its type.
void FileProxyConnection::sendFile(const QString &filePath)
{
    const bool wantsBody = m_request.method() == HttpRequest::Get;
    auto file = std::make_unique<QFile>(filePath);
    const bool isOpen = file->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    const qint64 size = file->size();
    QByteArray start;
    if (isOpen)
        start = file->read(std::min<qint64>(size, wantsBody ? smallFileSize : contentTypeBytes));
    const QByteArray head = responseHead(
        Ok, {{"Content-Type", contentType(start.left(contentTypeBytes))},
             {"Connection", "keep-alive"},
             {"Content-Length", QByteArray::number(size)}});
    if (!wantsBody)
        m_output.append(head);
    else if (start.size() == size)
        m_output.append(head + start);
    else
        m_output.append(head + start, std::move(file), size - start.size());
    m_state = ReadingRequestLine;
}

/// The state stays AwaitingResponse, so that a client's next request on this connection is refused
/// and comes again on a new one.
void FileProxyConnection::sendPhrase(int code)
{
    const QByteArray phrase = reasonPhrase(code);
    const QByteArray head = responseHead(
        code,
        {{"Connection", "keep-alive"}, {"Content-Length", QByteArray::number(phrase.size())}});
    m_output.append(m_request.method() == HttpRequest::Get ? head + phrase : head);
}

/// Fills the socket's buffer from the output. With more output than fits, the buffer is never left
/// empty: its next bytesWritten() is what brings the rest.
void FileProxyConnection::drain()
{
    if (m_draining || !m_socket)
        return;
    const QScopedValueRollback<bool> guard(m_draining, true);
    while (!m_output.isEmpty() && m_socket->bytesToWrite() < lowWater)
        m_socket->write(m_output.take(pieceSize));
    if (m_output.fellShort())
        m_closing = true;
    if (m_closing)
        linger();
}

/// Until the output is out this begins anew with each piece that the client takes.
void FileProxyConnection::linger()
{
    const bool isOut = m_output.isEmpty() && m_socket->bytesToWrite() == 0;
    if (isOut && m_lingerEnd.isForever())
        m_lingerEnd.setRemainingTime(longestLinger);
    m_linger.start(int((isOut ? lingerTime : longestLinger).count()), this);
}

/// Drains with the first pieces sent at once, which saves a small answer a turn of the event loop.
/// The rest waits for its turns, however much the client could take: a large file must not block.
void FileProxyConnection::flush()
{
    drain();
    if (m_draining || !m_socket)
        return;
    {
        const QScopedValueRollback<bool> guard(m_draining, true);
        m_socket->flush();
    }
    drain();
}

void FileProxyConnection::handleBytesWritten()
{
    drain();
    read();
    if (isIdle())
        Q_EMIT idle();
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "proxy/httprequest.h"
#include "proxy/outputqueue.h"

#include <QBasicTimer>
#include <QDeadlineTimer>
#include <QObject>
#include <QUrl>

#include <optional>

class QTcpSocket;

namespace nk::pm {

/// One TCP connection of the FileProxyServer, and the whole of its HTTP.
///
/// Reads requests, reports each with fileRequested(), and sends what sendResponse() answers, at
/// once or much later. Answers leave in the order of their requests, files piece by piece as the
/// client takes them, so that memory stays flat for any file and any client. Lives on the server's
/// thread; its owner destroys it after closed(), but never from within fileRequested().
class FileProxyConnection : public QObject
{
    Q_OBJECT

public:
    /// Of the requests. Answers that are still on their way out don't count.
    enum State { ReadingRequestLine = 0, ReadingHeaders = 1, AwaitingResponse = 2 };
    enum ResponseCode { Ok = 200, BadRequest = 400, NotFound = 404, MethodNotAllowed = 405 };

    /// Takes \a socket over, which is connected.
    explicit FileProxyConnection(QTcpSocket *socket, QObject *parent = nullptr);
    ~FileProxyConnection() override;

    /// Unique within the process.
    int connectionId() const { return m_connectionId; }
    State state() const { return m_state; }
    /// The target of the current or last request, as sent.
    QByteArray requestTarget() const { return m_request.target(); }

    /// Answers the request that waits: with the file \a filePath for code 200, otherwise with the
    /// code's reason phrase. Ignored in every state but AwaitingResponse, which only a 200 ends. A
    /// file that can't be opened is sent as an empty one.
    void sendResponse(int code, const QString &filePath);

    /// Nobody waits for anything: every request is answered, and the answers are out.
    bool isIdle() const;
    /// Closes at once, whatever is under way.
    void end();

Q_SIGNALS:
    /// Has become so with the last bytes of an answer.
    void idle();
    /// The connection is over, and emits nothing more.
    void closed();
    /// A request is complete and waits for sendResponse(), which may be called from within.
    void fileRequested(QUrl url);

protected:
    void timerEvent(QTimerEvent *event) override;

private Q_SLOTS:
    void read();
    void handleDisconnect();
    void writeErrorResponse(
        nk::pm::FileProxyConnection::ResponseCode responseCode, bool close = false);

private:
    bool hasLine() const;
    void readLine(const QByteArray &line);
    void readRequestLine(const QByteArray &line);
    void readHeaderLine(const QByteArray &line);
    void sendFile(const QString &filePath);
    void sendPhrase(int code);
    void drain();
    void flush();
    void resumeReading();
    void dropInput();
    void linger();
    void handleBytesWritten();

    State m_state = ReadingRequestLine;
    const int m_connectionId;
    QTcpSocket *m_socket; ///< null once disconnected
    HttpRequest m_request;
    /// What is wrong with the line being read; answered when its end is there.
    std::optional<ResponseCode> m_fault;
    OutputQueue m_output;
    bool m_closing = false;    ///< close when the output is out; what comes in is dropped
    bool m_isAnswered = false; ///< the request that AwaitingResponse is about
    QBasicTimer m_linger;
    QDeadlineTimer m_lingerEnd{QDeadlineTimer::Forever}; ///< set once all output is out
    bool m_reading = false;
    bool m_draining = false;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QPointer>
#include <QTcpServer>
#include <QUrl>
#include <QVector>

#include <functional>

namespace nk::pm::test {

/// A request as the test server got it.
struct HttpTestRequest
{
    QByteArray method;
    QByteArray target;                     ///< path and query as sent
    QHash<QByteArray, QByteArray> headers; ///< by lower-case name
};

/// What the test server does with one request: which bytes it sends, and how. A lie of any kind is
/// one of these.
struct HttpTestAnswer
{
    QByteArray bytes;  ///< everything that goes over the wire, status line included
    int pieceSize = 0; ///< sent in pieces of that many bytes, a turn of the event loop between them
    enum Ending { StaysOpen, Closes, Resets };
    Ending ending = StaysOpen; ///< what becomes of the connection when all is sent
    int endingDelay = 0;       ///< milliseconds before that
    bool keepsSilent = false;  ///< sends nothing; the connection waits for answerHeld()

    /// A complete answer with a Content-Length. \a headers are lines that end in CR LF.
    static HttpTestAnswer of(
        int status, const QByteArray &body = {}, const QByteArray &headers = {});
    static HttpTestAnswer ok(const QByteArray &body) { return of(200, body); }
    static HttpTestAnswer redirect(const QByteArray &location, int status = 302);
    /// A 200 in chunks of at most \a chunkSize bytes.
    static HttpTestAnswer chunked(const QByteArray &body, int chunkSize);
    static HttpTestAnswer raw(const QByteArray &bytes);
    static HttpTestAnswer silence();

    /// The same answer, with the connection ended \a delay milliseconds after its first \a size
    /// bytes.
    HttpTestAnswer cutAt(int size, Ending ending = Closes, int delay = 0) const;
    HttpTestAnswer inPieces(int size) const;
};

/// A small HTTP/1.1 server on the loopback interface, on a port of the kernel's choice, with
/// persistent connections. Runs in the test's own event loop; one handler answers every request.
class HttpTestServer : public QTcpServer
{
    Q_OBJECT

public:
    using Handler = std::function<HttpTestAnswer(const HttpTestRequest &)>;

    explicit HttpTestServer(const Handler &handler);
    /// Answers every request with \a answer.
    explicit HttpTestServer(const HttpTestAnswer &answer);

    void setHandler(const Handler &handler) { m_handler = handler; }
    QUrl url(const QString &path = QStringLiteral("/")) const;

    const QVector<HttpTestRequest> &requests() const { return m_requests; }
    int requestCount() const { return m_requests.size(); }

    /// Connections that got silence for an answer and are still open.
    int heldCount() const;
    /// Answers them all at last.
    void answerHeld(const HttpTestAnswer &answer);

private:
    void accept();
    void read(QTcpSocket *socket);
    void answer(QTcpSocket *socket, const HttpTestAnswer &answer);
    void end(QTcpSocket *socket, HttpTestAnswer::Ending ending);

    Handler m_handler;
    QVector<HttpTestRequest> m_requests;
    QVector<QPointer<QTcpSocket>> m_held;
};

} // namespace nk::pm::test

Q_DECLARE_METATYPE(nk::pm::test::HttpTestAnswer)

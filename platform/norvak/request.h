// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/norvak_export.h>

#include <QByteArray>
#include <QNetworkRequest>
#include <QObject>
#include <QScopedPointer>

#include <chrono>

class QIODevice;
class QNetworkAccessManager;
class QNetworkReply;

namespace nk {

struct RequestPrivate;

/// One HTTP exchange, already running when it is made.
///
/// Life: a request runs in its thread's event loop, emits finished() exactly once, never inside its
/// constructor, and then deletes itself with deleteLater(). Nobody else needs to delete it.
/// Deleting it earlier is allowed at any time but inside a write of its own sink: the transfer is
/// aborted and nothing is emitted. A network access manager that dies, or that is null, ends the
/// request as a failed one.
///
/// Redirects are followed, at most 10, to https or the same scheme, never from https to http. The
/// headers Authorization, Cookie and Proxy-Authorization are dropped at the first redirect to
/// another origin, and stay dropped. Bodies of the redirects themselves are passed over.
///
/// Bodies arrive as the server stored them: the identity encoding is asked for unless the request's
/// own Accept-Encoding says otherwise. About 1 MiB is held between network and sink, however large
/// the body is. A body is whole, by its Content-Length or its chunks, or the exchange failed; one
/// that neither delimits is never whole, but for a redirect's, and a 304 that wasn't asked for is
/// no answer.
///
/// The bounds of an answer: 64 KiB and 200 lines of headers, 1xx answers included, beyond which the
/// exchange fails; 64 KiB of the body of an answer other than 2xx, the rest of which is left, as
/// its status is what counts. See the setters for size and time.
///
/// libcurl carries the exchange, on a thread of its own for all requests of the process, which ends
/// with the application object. Qt 5.15 itself takes some connections that break inside a chunked
/// body for its end, and goes through a flood of headers in one call on the caller's thread.
///
/// Of the manager, its proxy or proxy factory has its say (else the application's), and so has its
/// cookie jar; authenticationRequired() and proxyAuthenticationRequired() are emitted for
/// challenges of the kind Basic and their answers remembered; it emits finished() for the reply.
/// User and password in the URL are sent at once. Of the TLS configuration, the authorities (if
/// there are none, the system's), the peer's verification and TLS 1.3 as the least count; a peer
/// that can't be verified is refused, without sslErrors(). Not consulted: createRequest() (see
/// RequestCarrier), cache, clearAccessCache(), strict transport security, redirect policies,
/// HTTP/2.
class NORVAK_EXPORT Request : public QObject
{
    Q_OBJECT

public:
    ~Request() override;

    /// Body bytes go to \a sink as they arrive, in pieces of at most 64 KiB, whatever the status.
    /// Set it before returning to the event loop. Not owned. A sink that refuses a write, or that
    /// is deleted before the end, ends the exchange as a failed one.
    void setDataSink(QIODevice *sink);
    /// The sink; null if none was set or it is gone.
    QIODevice *dataSink() const;

    /// With \a suppress, a failure isn't logged. Off at first: everything but 2xx and 304 is.
    void setSuppressErrors(bool suppress);

    /// The exchange is given up once the server was silent for \a timeout, 30 s if nothing is set,
    /// never for 0. The time in which it waits its turn, behind six others to the same server,
    /// doesn't count. A QNetworkRequest::transferTimeout() of the request, or one of the manager,
    /// comes to the same thing.
    void setTransferTimeout(std::chrono::milliseconds timeout);

    /// The exchange is given up once less than \a bytesPerSecond came over a whole \a window since
    /// the answer began: 100 over 30 s if nothing is set, never for 0. The slowest modem sends ten
    /// times that. What a slow sink holds back isn't the server's fault and doesn't count.
    void setLowestRate(int bytesPerSecond, std::chrono::milliseconds window);

    /// The exchange is given up \a timeout from now, whatever has come; never for 0, as at first.
    void setTotalTimeout(std::chrono::milliseconds timeout);

    /// A body without a sink, which is held in memory, may have \a bytes, 1 GiB if nothing is set.
    /// What goes beyond fails the exchange and leaves no body.
    void setMaximumBodySize(int bytes);

    /// The HTTP status of a complete exchange, after redirects, whatever it is. 0 before the end,
    /// and for an exchange that didn't come to one: no answer, a cut, silent or slow connection, a
    /// malformed answer, one without end or beyond a bound, a refused write, a refused redirect.
    int responseCode() const;

    /// The exchange's reply, for its headers, and at the end for error() and errorString(), which
    /// tell why responseCode() is 0. It covers all redirects, there is nothing to read from it, and
    /// its manager() is null.
    /// abort() ends the request as a failed one. Owned by the request: don't keep it beyond
    /// finished().
    QNetworkReply *reply() const;

    /// The body as far as it arrived; empty if there is a sink.
    QByteArray rawResponse() const;

Q_SIGNALS:
    void finished();

protected:
    Request(const QNetworkRequest &request, QNetworkAccessManager *manager, QObject *parent);

private:
    QScopedPointer<RequestPrivate> d;
};

/// A GET.
class NORVAK_EXPORT GetRequest : public Request
{
    Q_OBJECT

public:
    /// Sends \a request over \a manager (not owned) from now on. Only http and https URLs are
    /// requested; any other fails.
    GetRequest(
        const QNetworkRequest &request, QNetworkAccessManager *manager, QObject *parent = nullptr);
};

} // namespace nk

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
/// the body is. A chunked body for a sink is the exception: it is requested twice, since it can't
/// be both held back and told from a cut one.
///
/// A body with a Content-Length is whole or the exchange failed. The end of a chunked one is Qt's
/// word, which is wrong for a connection that breaks if the server answered within the microseconds
/// that Qt 5.15 needs to finish sending, as only one on the same machine does. So what comes
/// chunked deserves a check of its own: a digest, a signature, its syntax.
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
    /// never for 0. While it waits its turn behind other requests to the same server, bytes for
    /// those count as well. A QNetworkRequest::transferTimeout() of the request comes to the same
    /// thing.
    void setTransferTimeout(std::chrono::milliseconds timeout);

    /// A body without a sink, which is held in memory, may have \a bytes, 1 GiB if nothing is set.
    /// What goes beyond fails the exchange and leaves no body.
    void setMaximumBodySize(int bytes);

    /// The HTTP status of a complete exchange, after redirects, whatever it is. 0 before the end,
    /// and for an exchange that didn't come to one: no answer, a cut or silent connection, a body
    /// shorter than its Content-Length, delimited by the connection's end alone or too large, a
    /// refused write, a refused redirect.
    int responseCode() const;

    /// The exchange's last reply, for its headers; null if none was made. Owned by the request:
    /// don't keep it beyond finished().
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

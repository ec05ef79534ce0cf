// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

class QUrl;

/// What Request decides about an answer, as functions of values. Any thread.
namespace nk::http {

/// The parts of an answer that tell whether its body came whole.
struct BodyFrame
{
    int status = 0;
    QByteArray transferEncoding; ///< value of the header, null if there was none
    QByteArray contentLength;    ///< value of the header, null if there was none
    qint64 received = 0;         ///< body bytes that arrived
};

/// Whether \a frame's body is as long as announced. A body that neither a length nor chunks delimit
/// is never whole: its end is no different from a cut. The end of chunks is for the transport to
/// judge.
bool isWholeBody(const BodyFrame &frame);

/// Whether \a status sends the client on to the URL of a Location header.
bool isRedirect(int status);

/// Whether a redirect may lead from \a from to \a to: HTTP only, and never from https to http.
bool isSafeRedirect(const QUrl &from, const QUrl &to);

} // namespace nk::http

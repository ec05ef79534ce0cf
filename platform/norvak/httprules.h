// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/httpfault.h"

#include <QByteArray>
#include <QPair>
#include <QVector>

class QUrl;

/// What Request decides about an answer, as functions of values. Any thread.
namespace nk::http {

/// Status and headers of an answer.
struct Head
{
    int status = 0;
    QByteArray reason;
    QVector<QPair<QByteArray, QByteArray>> headers; ///< as they came

    /// Of all headers called \a name, joined by ", "; null if there is none.
    QByteArray value(const char *name) const;
    /// What Content-Length announces, -1 if there is none, or it is no plain decimal number.
    qint64 length() const;
};

/// Reads heads line by line, within bounds that hold for all of them: 64 KiB and 200 lines.
class HeadReader
{
public:
    /// Takes a \a line with its line break. Those of 1xx answers and of trailers count as well.
    Fault take(const QByteArray &line);
    /// Whether the head of the answer itself is there.
    bool isComplete() const { return m_isComplete; }
    const Head &head() const { return m_head; }

private:
    Fault takeLine(const QByteArray &line);
    Fault takeStatusLine(const QByteArray &line);

    Head m_head;
    int m_bytes = 0;
    int m_lines = 0;
    bool m_isComplete = false;
};

/// What keeps an answer with \a head from being taken, as far as its head tells. \a isConditional:
/// the request would do with a 304.
Fault faultOf(const Head &head, bool isConditional);

/// Whether \a status sends the client on to the URL of a Location header.
bool isRedirect(int status);

/// Whether a redirect may lead from \a from to \a to: HTTP only, and never from https to http.
bool isSafeRedirect(const QUrl &from, const QUrl &to);

/// The realm of a challenge of the kind Basic in \a value, a header of a 401 or 407; null if there
/// is none.
QByteArray basicRealm(const QByteArray &value);

} // namespace nk::http

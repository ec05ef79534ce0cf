// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QHash>

namespace nk::pm {

/// The part of an HTTP/1.1 request that the local file proxy understands, read line by line.
///
/// A line is what QIODevice::readLine() gives, its line end included. Requests have no body.
class HttpRequest
{
public:
    enum Method { Get = 0, Head = 1 };
    enum Fault { NoFault, Malformed, UnknownMethod };

    /// Only so many different header names are kept: the client may send more, forever.
    static constexpr int maxHeaders = 100;

    /// Reads "METHOD target HTTP/1.1". With a fault, method and target stay as they were.
    Fault readRequestLine(const QByteArray &line);

    /// Reads one header line, of which none is a fault. True for the empty line, CR LF, that ends
    /// the headers. A later header replaces an earlier one of the same name, also of an earlier
    /// request.
    bool readHeaderLine(const QByteArray &line);

    Method method() const { return m_method; }
    /// As sent, neither decoded nor normalised. May hold blanks.
    QByteArray target() const { return m_target; }
    /// Whether there is a Host, and none but this machine: localhost or a loopback address.
    bool isForLoopback() const;
    /// By name as sent, case included.
    QHash<QByteArray, QByteArray> headers() const { return m_headers; }

private:
    Method m_method = Get;
    QByteArray m_target;
    QHash<QByteArray, QByteArray> m_headers;
};

} // namespace nk::pm

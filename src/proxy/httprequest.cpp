// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/httprequest.h"

#include <QList>

namespace nk::pm {

HttpRequest::Fault HttpRequest::readRequestLine(const QByteArray &line)
{
    QList<QByteArray> parts = line.trimmed().split(' ');
    if (parts.size() < 3 || parts.takeLast() != "HTTP/1.1")
        return Malformed;
    const QByteArray name = parts.takeFirst();
    if (name != "GET" && name != "HEAD")
        return UnknownMethod;
    m_method = name == "HEAD" ? Head : Get;
    m_target = parts.join(' ');
    return NoFault;
}

bool HttpRequest::readHeaderLine(const QByteArray &line)
{
    if (line == "\r\n")
        return true;
    const int colon = line.indexOf(':');
    if (colon < 0)
        return false;
    const QByteArray name = line.left(colon);
    if (m_headers.size() < maxHeaders || m_headers.contains(name))
        m_headers.insert(name, line.mid(colon + 1).trimmed());
    return false;
}

} // namespace nk::pm

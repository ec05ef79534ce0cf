// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/httprequest.h"

#include <QHostAddress>
#include <QList>
#include <QUrl>

namespace nk::pm {

namespace {

bool isLoopback(const QByteArray &host)
{
    QUrl url;
    url.setAuthority(QString::fromLatin1(host), QUrl::StrictMode);
    return url.userInfo().isEmpty()
           && (url.host() == QLatin1String("localhost") || QHostAddress(url.host()).isLoopback());
}

} // namespace

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

bool HttpRequest::isForLoopback() const
{
    bool isNamed = false;
    for (auto header = m_headers.begin(); header != m_headers.end(); ++header) {
        if (header.key().compare("host", Qt::CaseInsensitive) != 0)
            continue;
        isNamed = true;
        if (!isLoopback(header.value()))
            return false;
    }
    return isNamed;
}

} // namespace nk::pm

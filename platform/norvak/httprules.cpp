// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/httprules.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>

namespace nk::http {

namespace {

// A browser's servers send a tenth of that. What is read is also what has to be looked through.
constexpr int maximumHeadBytes = 64 * 1024;
constexpr int maximumHeadLines = 200;

bool neverHasBody(int status)
{
    return status == 204 || status == 304;
}

bool isNumber(const QByteArray &text)
{
    return !text.isEmpty()
           && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

QByteArray Head::value(const char *name) const
{
    QByteArray joined;
    for (const auto &header : headers) {
        if (qstricmp(header.first.constData(), name) == 0)
            joined += joined.isNull() ? header.second : ", " + header.second;
    }
    return joined;
}

qint64 Head::length() const
{
    const QByteArray text = value("Content-Length");
    bool fits = false;
    const qint64 length = text.toLongLong(&fits);
    return fits && isNumber(text) ? length : -1;
}

Fault HeadReader::take(const QByteArray &line)
{
    m_bytes += line.size();
    if (++m_lines > maximumHeadLines || m_bytes > maximumHeadBytes)
        return Fault::HeadTooLarge;
    return m_isComplete ? Fault::None : takeLine(line.trimmed());
}

Fault HeadReader::takeLine(const QByteArray &line)
{
    if (line.startsWith("HTTP/"))
        return takeStatusLine(line);
    if (line.isEmpty()) {
        m_isComplete = m_head.status >= 200;
        return m_head.status == 101 ? Fault::Unasked : Fault::None;
    }
    const int colon = line.indexOf(':');
    if (colon < 1)
        return Fault::Malformed;
    m_head.headers.append({line.left(colon).trimmed(), line.mid(colon + 1).trimmed()});
    // A null value would read as a missing header.
    if (m_head.headers.last().second.isNull())
        m_head.headers.last().second = "";
    return Fault::None;
}

Fault HeadReader::takeStatusLine(const QByteArray &line)
{
    const QList<QByteArray> words = line.split(' ');
    m_head = {words.value(1).toInt(), words.mid(2).join(' '), {}};
    return words.value(1).size() == 3 && isNumber(words.value(1)) ? Fault::None : Fault::Malformed;
}

Fault faultOf(const Head &head, bool isConditional)
{
    if (head.status == 304 && !isConditional)
        return Fault::Unasked;
    if (neverHasBody(head.status))
        return Fault::None;
    const QByteArray coding = head.value("Transfer-Encoding");
    const bool hasLength = !head.value("Content-Length").isNull();
    if (!coding.isNull())
        return coding.toLower() == "chunked" && !hasLength ? Fault::None : Fault::Malformed;
    if (!hasLength) // nobody reads where a redirect ends
        return isRedirect(head.status) ? Fault::None : Fault::WithoutEnd;
    return head.length() >= 0 ? Fault::None : Fault::Malformed;
}

bool isRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

bool isSafeRedirect(const QUrl &from, const QUrl &to)
{
    if (to.host().isEmpty())
        return false;
    return to.scheme() == QLatin1String("https")
           || (to.scheme() == QLatin1String("http") && from.scheme() == QLatin1String("http"));
}

QByteArray basicRealm(const QByteArray &value)
{
    static const QRegularExpression challenge(
        QStringLiteral("(?:^|,)\\s*basic\\b(?:[^\"]*?\\brealm=\"([^\"]*)\")?"),
        QRegularExpression::CaseInsensitiveOption);
    const auto match = challenge.match(QString::fromLatin1(value));
    return match.hasMatch() ? "" + match.captured(1).toLatin1() : QByteArray();
}

} // namespace nk::http

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/httprules.h"

#include <QUrl>

#include <algorithm>

namespace nk::http {

static bool neverHasBody(int status)
{
    return status == 204 || status == 304;
}

// -1 if the text is no plain decimal number, which also covers two lengths that were joined by a
// comma.
static qint64 parseLength(const QByteArray &text)
{
    const bool digits =
        std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
    bool fits = false;
    const qint64 length = text.toLongLong(&fits);
    return digits && fits ? length : -1;
}

bool isWholeBody(const BodyFrame &frame)
{
    if (neverHasBody(frame.status))
        return true;
    if (!frame.transferEncoding.isNull())
        return frame.transferEncoding.toLower().contains("chunked");
    return parseLength(frame.contentLength.trimmed()) == frame.received;
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

} // namespace nk::http

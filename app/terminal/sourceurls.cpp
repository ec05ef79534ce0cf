// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "terminal/sourceurls.h"

namespace nk::pm::terminal {

namespace {

QUrl webUrl(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    const bool isWeb =
        url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https");
    if (!url.isValid() || !isWeb || url.host().isEmpty())
        return QUrl();
    return url.adjusted(QUrl::StripTrailingSlash | QUrl::RemoveQuery | QUrl::RemoveFragment);
}

} // namespace

QUrl serverUrl(const QString &text)
{
    return webUrl(text);
}

QUrl databaseUrl(const QString &text)
{
    QUrl url = webUrl(text);
    if (url.path().size() < 2)
        return QUrl();
    if (url.userName().isEmpty()) {
        url.setUserName(qEnvironmentVariable("NKPM_COUCHDB_USER"));
        if (!url.userName().isEmpty())
            url.setPassword(qEnvironmentVariable("NKPM_COUCHDB_PASSWORD"));
    }
    return url;
}

QString withoutCredentials(const QString &text)
{
    const int host = text.lastIndexOf(QLatin1Char('@')) + 1;
    const int scheme = text.indexOf(QLatin1String("://"));
    return host == 0 ? text : text.left(scheme < 0 ? 0 : scheme + 3) + text.mid(host);
}

} // namespace nk::pm::terminal

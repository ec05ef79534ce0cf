// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "terminal/databaseurl.h"

namespace nk::pm::terminal {

QUrl databaseUrl(const QString &text)
{
    QUrl url(text, QUrl::StrictMode);
    url = url.adjusted(QUrl::StripTrailingSlash | QUrl::RemoveQuery | QUrl::RemoveFragment);
    const bool isWeb = url.scheme() == u"http" || url.scheme() == u"https";
    if (!url.isValid() || !isWeb || url.host().isEmpty() || url.path().size() < 2)
        return QUrl();
    if (url.userName().isEmpty()) {
        url.setUserName(qEnvironmentVariable("NKPM_COUCHDB_USER"));
        if (!url.userName().isEmpty())
            url.setPassword(qEnvironmentVariable("NKPM_COUCHDB_PASSWORD"));
    }
    return url;
}

QString shown(const QUrl &url)
{
    return url.toString(QUrl::RemoveUserInfo);
}

} // namespace nk::pm::terminal

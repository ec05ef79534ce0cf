// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/credentials.h"

#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QUrl>

namespace nk::http {

Credentials &Credentials::of(QNetworkAccessManager *manager)
{
    auto *found = manager->findChild<Credentials *>(QString(), Qt::FindDirectChildrenOnly);
    return found ? *found : *new Credentials(manager);
}

std::optional<Credentials::Pair> Credentials::find(const QString &key) const
{
    const auto it = m_known.find(key);
    return it == m_known.end() ? std::nullopt : std::optional(*it);
}

bool Credentials::keep(const QString &key, const Pair &given)
{
    const auto before = find(key);
    if (given.user.isEmpty()
        || (before && before->user == given.user && before->password == given.password))
        return false;
    m_known.insert(key, given);
    return true;
}

QString Credentials::keyOf(const QUrl &url)
{
    const int port = url.port(url.scheme() == QLatin1String("https") ? 443 : 80);
    return QStringLiteral("%1://%2:%3").arg(url.scheme(), url.host()).arg(port);
}

QString Credentials::keyOf(const QNetworkProxy &proxy)
{
    return QStringLiteral("proxy %1:%2").arg(proxy.hostName()).arg(proxy.port());
}

} // namespace nk::http

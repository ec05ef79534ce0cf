// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/servertraffic.h"

#include <QNetworkAccessManager>
#include <QUrl>

namespace nk {

ServerTraffic::ServerTraffic(QNetworkAccessManager *manager)
    : QObject(manager)
{}

ServerTraffic::Counter ServerTraffic::counter(QNetworkAccessManager *manager, const QUrl &url)
{
    auto *traffic = manager->findChild<ServerTraffic *>(QString(), Qt::FindDirectChildrenOnly);
    if (!traffic)
        traffic = new ServerTraffic(manager);
    return traffic->counterOf(
        url.adjusted(
               QUrl::RemoveUserInfo | QUrl::RemovePath | QUrl::RemoveQuery | QUrl::RemoveFragment)
            .toString());
}

ServerTraffic::Counter ServerTraffic::counterOf(const QString &origin)
{
    if (Counter known = m_counters.value(origin).toStrongRef())
        return known;
    // Servers come and go; a dead entry is dropped when the next server comes.
    for (auto it = m_counters.begin(); it != m_counters.end();)
        it = it.value().isNull() ? m_counters.erase(it) : std::next(it);
    auto fresh = Counter::create(0);
    m_counters.insert(origin, fresh);
    return fresh;
}

} // namespace nk

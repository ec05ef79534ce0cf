// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QObject>
#include <QSharedPointer>
#include <QWeakPointer>

class QNetworkAccessManager;
class QUrl;

namespace nk {

/// Counts what arrives from each server over one network access manager.
///
/// A manager opens six connections to a host and lets all further requests wait, with no sign of
/// when one is sent. So a request that has heard nothing yet asks here whether the server is silent
/// or merely busy with the others. Child of its manager, on the manager's thread.
class ServerTraffic : public QObject
{
    Q_OBJECT

public:
    using Counter = QSharedPointer<quint64>;

    /// The counter that all requests of \a manager to the origin of \a url share while one of them
    /// lives.
    static Counter counter(QNetworkAccessManager *manager, const QUrl &url);

private:
    explicit ServerTraffic(QNetworkAccessManager *manager);
    Counter counterOf(const QString &origin);

    QHash<QString, QWeakPointer<quint64>> m_counters;
};

} // namespace nk

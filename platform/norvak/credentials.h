// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QObject>

#include <optional>

class QNetworkAccessManager;
class QNetworkProxy;
class QUrl;

namespace nk::http {

/// The users and passwords that the application gave for a manager's servers and proxies. Child of
/// its manager, on its thread.
class Credentials : public QObject
{
    Q_OBJECT

public:
    struct Pair
    {
        QString user;
        QString password;
    };

    static Credentials &of(QNetworkAccessManager *manager);

    std::optional<Pair> find(const QString &key) const;
    /// False if there is no user, or the pair was known.
    bool keep(const QString &key, const Pair &given);

    /// Scheme, host and port, also those that \a url doesn't name.
    static QString keyOf(const QUrl &url);
    static QString keyOf(const QNetworkProxy &proxy);

private:
    using QObject::QObject;

    QHash<QString, Pair> m_known;
};

} // namespace nk::http

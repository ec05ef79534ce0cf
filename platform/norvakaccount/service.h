// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/request.h>
#include <norvakaccount/resource.h>

#include <QScopedPointer>
#include <QUrl>

namespace nk::account {

struct ServicePrivate;

/// A server of the user's account: makes requests relative to its base URL, with the user's token.
/// Lives on its network access manager's thread.
class NORVAK_ACCOUNT_EXPORT Service : public Resource
{
    Q_OBJECT

public:
    enum Status {
        Disabled = 0,   ///< never enabled
        Connecting = 1, ///< becoming available
        Available = 2,  ///< requests may be sent
        Failed = 3,     ///< can't be reached; enable() tries again
    };
    Q_ENUM(Status)

    /// \a baseUrl names a directory, with or without its trailing slash. \a manager isn't owned;
    /// once it is gone, requests fail.
    Service(
        const QString &uuid, const QUrl &baseUrl, QNetworkAccessManager *manager,
        QObject *parent = nullptr);
    ~Service() override;

    /// Asks the service to become active: Connecting at once, Available in the next event loop
    /// turn. Does nothing if it is on the way or there. The server isn't asked.
    void enable();
    Status status() const;

    /// A request for \a relative, resolved against the base URL.
    QNetworkRequest createRequest(const QUrl &relative) const;

    /// A new GET, already running, without a parent: it deletes itself after finished(). A \a
    /// request that was turned to another origin loses its bearer token.
    nk::GetRequest *getRequest(const QUrl &relative) const;
    nk::GetRequest *getRequest(const QNetworkRequest &request) const;

    /// Sends \a token as a bearer token with each further request to the base URL's own origin, and
    /// to no other, not after a redirect either. An empty token sends none. A token with a line
    /// break is refused as if it were empty.
    void setAccessToken(const QByteArray &token);

Q_SIGNALS:
    void statusChanged();

private:
    QScopedPointer<ServicePrivate> d;
};

} // namespace nk::account

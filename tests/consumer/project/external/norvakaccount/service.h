// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/request.h>

#include <QUrl>

namespace nk::account {

class Service : public QObject
{
    Q_OBJECT

public:
    enum Status { Disabled = 0, Connecting = 1, Available = 2, Failed = 3 };

    QString uuid() const { return QStringLiteral("own"); }
    void enable() {}
    Status status() const { return Disabled; }
    QNetworkRequest createRequest(const QUrl &relative) const { return QNetworkRequest(relative); }
    GetRequest *getRequest(const QUrl &relative) const
    {
        return getRequest(createRequest(relative));
    }
    GetRequest *getRequest(const QNetworkRequest &request) const
    {
        return new GetRequest(request, nullptr);
    }

Q_SIGNALS:
    void statusChanged();
};

} // namespace nk::account

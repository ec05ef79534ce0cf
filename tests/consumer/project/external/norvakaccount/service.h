// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/request.h>

#include <QUrl>

namespace nk::account {

class Resource : public QObject
{
    Q_OBJECT

public:
    QString uuid() const { return QStringLiteral("own"); }
};

class Service : public Resource
{
    Q_OBJECT

public:
    enum Status { Disabled = 0, Connecting = 1, Available = 2, Failed = 3 };

    void enable() {}
    Status status() const { return Disabled; }
    QNetworkRequest createRequest(const QUrl &relative) const { return QNetworkRequest(relative); }
    nk::GetRequest *getRequest(const QUrl &relative) const;
    nk::GetRequest *getRequest(const QNetworkRequest &request) const;

Q_SIGNALS:
    void statusChanged();
};

} // namespace nk::account

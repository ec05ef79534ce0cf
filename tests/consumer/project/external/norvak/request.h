// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace nk {

/// Every request fails in the next turn of the event loop.
class Request : public QObject
{
    Q_OBJECT

public:
    explicit Request(QObject *parent)
        : QObject(parent)
    {
        connect(this, &Request::finished, this, &QObject::deleteLater);
        QTimer::singleShot(0, this, &Request::finished);
    }

    void setDataSink(QIODevice *) {}
    void setSuppressErrors(bool) {}
    int responseCode() const { return 0; }
    QNetworkReply *reply() const { return nullptr; }
    QByteArray rawResponse() const { return {}; }

Q_SIGNALS:
    void finished();
};

class GetRequest : public Request
{
    Q_OBJECT

public:
    GetRequest(const QNetworkRequest &, QNetworkAccessManager *, QObject *parent = nullptr)
        : Request(parent)
    {}
};

} // namespace nk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QIODevice>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QObject>

namespace nk {

/// Every request fails in the next turn of the event loop.
class Request : public QObject
{
    Q_OBJECT

public:
    explicit Request(QObject *parent);

    void setDataSink(QIODevice *sink) { m_sink = sink; }
    QIODevice *dataSink() const { return m_sink; }
    void setSuppressErrors(bool) {}
    int responseCode() const { return 0; }
    QNetworkReply *reply() const { return nullptr; }
    QByteArray rawResponse() const { return {}; }

Q_SIGNALS:
    void finished();

private:
    QIODevice *m_sink = nullptr;
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

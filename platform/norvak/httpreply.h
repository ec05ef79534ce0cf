// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/httprules.h"

#include <QNetworkReply>

#include <functional>

namespace nk {

/// The reply of a Request: tells what came of it, but has no body to read. Filled by its request.
class HttpReply : public QNetworkReply
{
    Q_OBJECT

public:
    HttpReply(const QNetworkRequest &request, QObject *parent);

    /// abort() calls \a cancel.
    void setCancel(const std::function<void()> &cancel) { m_cancel = cancel; }
    /// Emits nothing: metaDataChanged() is for the caller, once all is in order.
    void setHead(const QUrl &url, const http::Head &head);
    /// The end of the exchange: a \a status, or 0 and why there is none. Emits.
    void conclude(const QUrl &url, int status, http::Fault fault, const QString &detail);

    void abort() override;

protected:
    qint64 readData(char *data, qint64 maximumSize) override;

private:
    std::function<void()> m_cancel;
};

} // namespace nk

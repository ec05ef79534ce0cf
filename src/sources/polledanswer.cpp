// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/polledanswer.h"

#include <norvak/request.h>

#include <QNetworkReply>

namespace nk::pm {

QString etagOf(const nk::Request &request)
{
    constexpr int longest = 1024;
    const QNetworkReply *reply = request.reply();
    const QString etag = reply ? reply->header(QNetworkRequest::ETagHeader).toString() : QString();
    return etag.size() <= longest ? etag : QString();
}

bool mayRefuseCondition(int status)
{
    // Bad Request, Payload Too Large, Request Header Fields Too Large
    return status == 400 || status == 413 || status == 431;
}

} // namespace nk::pm

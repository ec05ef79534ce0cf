// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonDocument>
#include <QJsonObject>

namespace nk::crypto {

class JsonSignature
{
public:
    static QByteArray toByteArray(const QJsonObject &object)
    {
        return QJsonDocument(object).toJson(QJsonDocument::Compact);
    }
};

} // namespace nk::crypto

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/document.h>

#include <QJsonValue>

namespace nk::data {

class LinkedDocument : public Document
{
    Q_OBJECT

public:
    QJsonValue getStructValue(const QString &, const QString &) const { return {}; }
    void setStructValue(const QString &, const QString &, const QJsonValue &) {}
    QString encodeReference(QObject *) const { return {}; }
    QObject *decodeReference(const QString &) const { return nullptr; }
};

} // namespace nk::data

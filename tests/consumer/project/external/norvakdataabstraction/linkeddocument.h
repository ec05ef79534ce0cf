// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/context.h>

#include <QJsonValue>

namespace nk::data {

class LinkedDocument : public QObject
{
    Q_OBJECT

public:
    Context *context() const { return nullptr; }
    QJsonValue getStructValue(const QString &, const QString &) const { return {}; }
    void setStructValue(const QString &, const QString &, const QJsonValue &) {}
    QString encodeReference(QObject *) const { return {}; }
    QObject *decodeReference(const QString &) const { return nullptr; }
};

} // namespace nk::data

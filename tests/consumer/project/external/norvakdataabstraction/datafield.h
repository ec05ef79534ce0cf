// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakdataabstraction/linkeddocument.h>

#include <QVariant>

namespace nk::data {

class DataField : public QObject
{
    Q_OBJECT

public:
    explicit DataField(QObject *parent = nullptr)
        : QObject(parent)
    {}

    QString name() const { return {}; }
    virtual bool compare(const QVariant &, const QVariant &) const { return false; }
    virtual QVariant convert(const QVariant &) { return {}; }
    virtual QVariant read(LinkedDocument *, const QString &) { return {}; }
    virtual void write(LinkedDocument *, const QString &, const QVariant &) {}
};

} // namespace nk::data

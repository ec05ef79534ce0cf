// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakdataabstraction/datafield.h"

namespace nk::data {

struct DataFieldPrivate
{
    DataField *q;
    QString name;
};

namespace {

QJsonValue toJson(const QVariant &value)
{
    return value.isValid() ? QJsonValue::fromVariant(value) : QJsonValue(QJsonValue::Undefined);
}

} // namespace

DataField::DataField(QObject *parent)
    : QObject(parent)
    , d(new DataFieldPrivate{this, {}})
{}

DataField::~DataField() = default;

QString DataField::name() const
{
    return d->name;
}

void DataField::setName(const QString &name)
{
    if (d->name == name)
        return;
    d->name = name;
    Q_EMIT nameChanged();
}

bool DataField::compare(const QVariant &a, const QVariant &b) const
{
    return toJson(a) == toJson(b);
}

QVariant DataField::convert(const QVariant &value)
{
    return toJson(value).toVariant();
}

QVariant DataField::read(LinkedDocument *document, const QString &key)
{
    return document ? document->getStructValue(key, d->name).toVariant() : QVariant();
}

void DataField::write(LinkedDocument *document, const QString &key, const QVariant &value)
{
    if (document)
        document->setStructValue(key, d->name, toJson(value));
}

} // namespace nk::data

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereferencefield.h"

#include "references/packagereference.h"

#include <QJsonValue>

namespace nk::pm {

struct PackageReferenceFieldPrivate
{
    QVariant accepted(QObject *object) const;

    PackageReferenceField *q;
    QStringList acceptedTypes;
};

namespace {

bool holdsObject(const QVariant &value)
{
    return QMetaType::typeFlags(value.userType()).testFlag(QMetaType::PointerToQObject);
}

} // namespace

/// The value for \a object, of whatever package type.
QVariant PackageReferenceFieldPrivate::accepted(QObject *object) const
{
    return QVariant::fromValue(qobject_cast<PackageReference *>(object));
}

PackageReferenceField::PackageReferenceField(QObject *parent)
    : nk::data::DataField(parent)
    , d(new PackageReferenceFieldPrivate{this, {}})
{}

PackageReferenceField::~PackageReferenceField() = default;

QStringList PackageReferenceField::acceptedTypes() const
{
    return d->acceptedTypes;
}

void PackageReferenceField::setAcceptedTypes(const QStringList &types)
{
    if (d->acceptedTypes == types)
        return;
    d->acceptedTypes = types;
    Q_EMIT acceptedTypesChanged();
}

bool PackageReferenceField::compare(const QVariant &a, const QVariant &b) const
{
    return a.value<QObject *>() == b.value<QObject *>();
}

QVariant PackageReferenceField::convert(const QVariant &value)
{
    if (holdsObject(value))
        return d->accepted(value.value<QObject *>());
    if (value.canConvert<PackageReference *>())
        return d->accepted(value.value<PackageReference *>());
    return QVariant::fromValue<nk::data::LinkedDocument *>(nullptr);
}

QVariant PackageReferenceField::read(nk::data::LinkedDocument *document, const QString &key)
{
    if (!document)
        return QVariant::fromValue<nk::data::LinkedDocument *>(nullptr);
    return d->accepted(document->decodeReference(document->getStructValue(key, name()).toString()));
}

void PackageReferenceField::write(
    nk::data::LinkedDocument *document, const QString &key, const QVariant &value)
{
    if (!document)
        return;
    const QString reference = document->encodeReference(value.value<QObject *>());
    document->setStructValue(
        key, name(),
        reference.isEmpty() ? QJsonValue(QJsonValue::Undefined) : QJsonValue(reference));
}

} // namespace nk::pm

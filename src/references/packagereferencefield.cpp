// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/packagereferencefield.h"

#include "references/packagereference.h"

#include <QJsonValue>

namespace nk::pm {

struct PackageReferenceFieldPrivate
{
    PackageReferenceField *q;
    QStringList acceptedTypes;
};

namespace {

bool holdsObject(const QVariant &value)
{
    return QMetaType::typeFlags(value.userType()).testFlag(QMetaType::PointerToQObject);
}

/// A null one for an object of another class. The accepted types refuse no package.
QVariant asReference(QObject *object)
{
    return QVariant::fromValue(qobject_cast<PackageReference *>(object));
}

} // namespace

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
        return asReference(value.value<QObject *>());
    if (value.canConvert<PackageReference *>())
        return asReference(value.value<PackageReference *>());
    return QVariant::fromValue<nk::data::LinkedDocument *>(nullptr);
}

QVariant PackageReferenceField::read(nk::data::LinkedDocument *document, const QString &key)
{
    if (!document)
        return QVariant::fromValue<nk::data::LinkedDocument *>(nullptr);
    return asReference(document->decodeReference(document->getStructValue(key, name()).toString()));
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

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagedata.h"

#include "query/listproperty.h"
#include "query/manifestfieldlist.h"
#include "query/packagemanifestdata.h"
#include "query/watchedpointer.h"

namespace nk::pm {

struct PackageDataPrivate
{
    PackageData *q;
    WatchedPointer<PackageReference> packageReference;
    PackageManifestData *manifest;
    ManifestFieldList manifestFields;

    explicit PackageDataPrivate(PackageData *data)
        : q(data)
        , manifest(new PackageManifestData(data))
        , manifestFields(data)
    {}

    void updateMap();
};

void PackageDataPrivate::updateMap()
{
    const PackageReference *reference = packageReference.get();
    const bool installed = reference && reference->status() == PackageReference::Installed;
    const PackageNode *node = reference ? reference->node() : nullptr;
    QStringList stale = manifest->keys();
    for (ManifestField *field : manifestFields.fields()) {
        if (!field)
            continue;
        stale.removeAll(field->name());
        const bool tooEarly = !installed && field->isStatusDependent();
        manifest->insert(field->name(), field->read(tooEarly ? nullptr : node));
    }
    for (const QString &key : qAsConst(stale))
        manifest->clear(key);
}

PackageData::PackageData(QObject *parent)
    : QObject(parent)
    , d(new PackageDataPrivate(this))
{}

PackageData::~PackageData() = default;

PackageReference *PackageData::packageReference() const
{
    return d->packageReference.get();
}

void PackageData::setPackageReference(PackageReference *reference)
{
    if (!d->packageReference.replace(reference, this))
        return;
    if (reference) {
        connect(reference, &PackageReference::statusChanged, this, &PackageData::update);
        connect(reference, &PackageReference::updated, this, &PackageData::update);
    }
    Q_EMIT packageReferenceChanged();
    d->updateMap();
}

QQmlListProperty<ManifestField> PackageData::manifestFields()
{
    return listProperty<ManifestField>(this, &d->manifestFields);
}

QQmlPropertyMap *PackageData::manifest() const
{
    return d->manifest;
}

void PackageData::classBegin()
{}

void PackageData::componentComplete()
{
    processFieldChange();
}

// Connects once more at each change of the list: a field then updates the map several times, with
// the same result.
void PackageData::processFieldChange()
{
    d->manifestFields.takeChange();
    for (const ManifestField *field : d->manifestFields.fields()) {
        if (field)
            connect(field, &ManifestField::updateRequested, this, &PackageData::update);
    }
    d->updateMap();
}

void PackageData::update()
{
    d->updateMap();
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagedata.h"

#include "query/listproperty.h"
#include "query/packagemanifestdata.h"
#include "query/watchedpointer.h"

#include <QPointer>
#include <QQmlInfo>
#include <QVector>

namespace nk::pm {

struct PackageDataPrivate
{
    PackageData *q;
    WatchedPointer<PackageReference> packageReference;
    PackageManifestData *manifest;
    bool fieldChangePending = false;
    QVector<QPointer<ManifestField>> manifestFields;

    explicit PackageDataPrivate(PackageData *data)
        : q(data)
        , manifest(new PackageManifestData(data))
    {}

    // The callbacks of the property manifestFields.
    void append(ManifestField *field);
    int count() const { return manifestFields.size(); }
    ManifestField *at(int i) const { return manifestFields.value(i); }
    void clear();
    void scheduleFieldChange();

    void updateMap();
};

void PackageDataPrivate::append(ManifestField *field)
{
    if (!field)
        qmlWarning(q) << "null is no manifest field";
    manifestFields.append(field);
    scheduleFieldChange();
}

void PackageDataPrivate::clear()
{
    if (manifestFields.isEmpty())
        return;
    for (ManifestField *field : qAsConst(manifestFields)) {
        if (field)
            QObject::disconnect(field, nullptr, q, nullptr);
    }
    manifestFields.clear();
    scheduleFieldChange();
}

void PackageDataPrivate::scheduleFieldChange()
{
    if (fieldChangePending)
        return;
    fieldChangePending = true;
    QMetaObject::invokeMethod(q, "processFieldChange", Qt::QueuedConnection);
}

void PackageDataPrivate::updateMap()
{
    const PackageReference *reference = packageReference.get();
    const bool installed = reference && reference->status() == PackageReference::Installed;
    const PackageNode *node = reference ? reference->node() : nullptr;
    QStringList stale = manifest->keys();
    for (ManifestField *field : qAsConst(manifestFields)) {
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
    if (d->packageReference.holds(reference))
        return;
    if (d->packageReference.get())
        disconnect(d->packageReference.get(), nullptr, this, nullptr);
    d->packageReference.assign(reference);
    if (reference) {
        connect(reference, &PackageReference::statusChanged, this, &PackageData::update);
        connect(reference, &PackageReference::updated, this, &PackageData::update);
    }
    Q_EMIT packageReferenceChanged();
    d->updateMap();
}

QQmlListProperty<ManifestField> PackageData::manifestFields()
{
    return listProperty<ManifestField>(this, d.data());
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
    d->fieldChangePending = false;
    for (const ManifestField *field : qAsConst(d->manifestFields)) {
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

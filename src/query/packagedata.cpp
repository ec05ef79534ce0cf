// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/packagedata.h"

#include "index/packageindex.h"
#include "query/inturn.h"
#include "query/listproperty.h"
#include "query/manifestfieldlist.h"
#include "query/packagemanifestdata.h"
#include "query/watchedpointer.h"

#include <QPointer>

namespace nk::pm {

struct PackageDataPrivate
{
    PackageData *q;
    WatchedPointer<PackageReference> packageReference;
    PackageManifestData *manifest;
    ManifestFieldList manifestFields;
    int runs = 0; ///< of updateMap()

    explicit PackageDataPrivate(PackageData *data)
        : q(data)
        , manifest(new PackageManifestData(data))
        , manifestFields(data, [data] { data->processFieldChange(); })
    {}

    void updateMap();
    bool set(const QString &key, const QVariant &value);
};

// Each change of a value is told at once, and who hears it may change what the other values are
// read from, which makes a later run of this, or destroy it.
void PackageDataPrivate::updateMap()
{
    const PackageReference *reference = packageReference.get();
    const bool installed = reference && reference->status() == PackageReference::Installed;
    const auto index = reference ? reference->packageIndex() : QSharedPointer<PackageIndex>();
    const PackageNode *node = reference ? reference->node() : nullptr; // held by the index
    QStringList stale = manifest->keys();
    const auto fields = manifestFields.fields();
    ++runs;
    for (ManifestField *field : fields) {
        if (!field)
            continue;
        stale.removeAll(field->name());
        const bool tooEarly = !installed && field->isStatusDependent();
        if (!set(field->name(), field->read(tooEarly ? nullptr : node)))
            return;
    }
    for (const QString &key : qAsConst(stale)) {
        if (!set(key, QVariant()))
            return;
    }
}

/// False if a later run has begun, or all is gone.
bool PackageDataPrivate::set(const QString &key, const QVariant &value)
{
    const QPointer<PackageData> guard(q);
    const int run = runs;
    if (value.isValid())
        manifest->insert(key, value);
    else
        manifest->clear(key);
    return guard && run == runs;
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
    if (!d->packageReference.replace(reference))
        return;
    d->packageReference.connect(&PackageReference::statusChanged, [this] { update(); });
    d->packageReference.connect(&PackageReference::updated, [this] { update(); });
    callInTurn(this, &PackageData::packageReferenceChanged, &PackageData::update);
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
    d->manifestFields.listen([this] { update(); });
    d->updateMap();
}

void PackageData::update()
{
    d->updateMap();
}

} // namespace nk::pm

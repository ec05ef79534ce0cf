// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/hasmanifestfield.h"

#include "index/packageindexnode.h"
#include "query/inturn.h"

namespace nk::pm {

struct HasManifestFieldPrivate
{
    HasManifestField *q;
    QString name;
};

HasManifestField::HasManifestField(QObject *parent)
    : PackageMatcher(parent)
    , d(new HasManifestFieldPrivate{this, {}})
{}

HasManifestField::~HasManifestField() = default;

QString HasManifestField::name() const
{
    return d->name;
}

void HasManifestField::setName(const QString &name)
{
    if (d->name == name)
        return;
    d->name = name;
    callInTurn(this, &HasManifestField::nameChanged, &HasManifestField::updateRequested);
}

std::function<bool(PackageNode *)> HasManifestField::matchFunction()
{
    if (d->name.isEmpty())
        return {};
    return [name = d->name](PackageNode *node) { return !node->manifestValue(name).isUndefined(); };
}

} // namespace nk::pm

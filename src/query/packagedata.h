// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"
#include "references/packagereference.h"

#include <norvakpackagemanager_export.h>

#include <QObject>
#include <QQmlListProperty>
#include <QQmlParserStatus>
#include <QQmlPropertyMap>
#include <QScopedPointer>

namespace nk::pm {

struct PackageDataPrivate;

/// The manifest of one package as a live property map: a key per declared field, holding what the
/// field reads from the package.
///
/// The map follows the reference: a new manifest, and the install status. A field whose value
/// depends on the install holds its default until the package is Installed. The map is to be read
/// only. GUI thread. Neither reference nor fields are owned, and each may die before the object.
class NK_PM_EXPORT PackageData : public QObject, public QQmlParserStatus
{
    Q_OBJECT
    Q_INTERFACES(QQmlParserStatus)
    Q_CLASSINFO("DefaultProperty", "manifestFields")
    /// The package shown; null for none, when each field holds its default. Not owned.
    Q_PROPERTY(nk::pm::PackageReference *packageReference READ packageReference WRITE
                   setPackageReference NOTIFY packageReferenceChanged)
    /// The fields to read, in their order; those nested in the declaration land here. Not owned. A
    /// binding to the list isn't told of changes.
    Q_PROPERTY(QQmlListProperty<nk::pm::ManifestField> manifestFields READ manifestFields NOTIFY
                   manifestFieldsChanged)
    /// The same as manifest, for short bindings: data.$.title.
    Q_PROPERTY(QQmlPropertyMap *$ READ manifest CONSTANT)
    /// The values by field name. What QML writes into the map is lost: the key is invalid until the
    /// next update.
    Q_PROPERTY(QQmlPropertyMap *manifest READ manifest CONSTANT)

public:
    /// Makes the map, which has no keys before the first update with fields.
    explicit PackageData(QObject *parent = nullptr);
    ~PackageData() override;

    /// Null also once the reference was destroyed; the map stays as it was until the next update.
    PackageReference *packageReference() const;
    /// Reads all fields at once, and then whenever the reference's status or package changes.
    void setPackageReference(PackageReference *reference);

    /// A change of the list is read in the next turn of the event loop. The key of a field that was
    /// taken out stays, with an invalid value.
    QQmlListProperty<nk::pm::ManifestField> manifestFields();

    /// The map, the same for the life of the object, which owns it.
    QQmlPropertyMap *manifest() const;

    /// Does nothing.
    void classBegin() override;
    /// Reads the declared fields, before the turn of the event loop ends.
    void componentComplete() override;

Q_SIGNALS:
    /// Before the map holds the other package's values. Not emitted when the reference dies.
    void packageReferenceChanged();
    /// Never emitted.
    void manifestFieldsChanged();

private Q_SLOTS:
    void processFieldChange();
    void update();

private:
    friend struct PackageDataPrivate;
    QScopedPointer<PackageDataPrivate> d;
};

} // namespace nk::pm

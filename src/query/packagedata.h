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
    Q_PROPERTY(nk::pm::PackageReference *packageReference READ packageReference WRITE
                   setPackageReference NOTIFY packageReferenceChanged)
    Q_PROPERTY(QQmlListProperty<nk::pm::ManifestField> manifestFields READ manifestFields NOTIFY
                   manifestFieldsChanged)
    Q_PROPERTY(QQmlPropertyMap *$ READ manifest CONSTANT)
    Q_PROPERTY(QQmlPropertyMap *manifest READ manifest CONSTANT)

public:
    explicit PackageData(QObject *parent = nullptr);
    ~PackageData() override;

    PackageReference *packageReference() const;
    void setPackageReference(PackageReference *reference);

    /// manifestFieldsChanged() isn't emitted for changes of this list.
    QQmlListProperty<nk::pm::ManifestField> manifestFields();

    /// The map, the same for the life of the object, which owns it.
    QQmlPropertyMap *manifest() const;

    void classBegin() override;
    void componentComplete() override;

Q_SIGNALS:
    void packageReferenceChanged();
    void manifestFieldsChanged();

private Q_SLOTS:
    void processFieldChange();
    void update();

private:
    QScopedPointer<PackageDataPrivate> d;
};

} // namespace nk::pm

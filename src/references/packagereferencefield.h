// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QStringList>
#include <norvakdataabstraction/datafield.h>

namespace nk::pm {

struct PackageReferenceFieldPrivate;

/// A document's field that holds a PackageReference, by way of PackageReferenceType.
///
/// Nothing is reported: without a context, a provider or a package that the string leads to, the
/// field reads as null. The references belong to the repository. GUI thread.
class NK_PM_EXPORT PackageReferenceField : public nk::data::DataField
{
    Q_OBJECT
    /// The package types that the field is meant for. No value is refused by them.
    Q_PROPERTY(QStringList acceptedTypes READ acceptedTypes WRITE setAcceptedTypes NOTIFY
                   acceptedTypesChanged)

public:
    /// A field without accepted types.
    explicit PackageReferenceField(QObject *parent = nullptr);
    ~PackageReferenceField() override;

    /// As they were set; empty at first.
    QStringList acceptedTypes() const;
    /// Emits acceptedTypesChanged() unless they are the present ones, in the same order.
    void setAcceptedTypes(const QStringList &types);

    /// Whether both are the same object, or both none.
    bool compare(const QVariant &a, const QVariant &b) const override;
    /// \a value as a PackageReference pointer, null for an object of another class. A value that is
    /// no object at all gives a null pointer to a LinkedDocument.
    QVariant convert(const QVariant &value) override;
    /// The reference as a PackageReference pointer, null if there is none. Without \a document a
    /// null pointer to a LinkedDocument.
    QVariant read(nk::data::LinkedDocument *document, const QString &key) override;
    /// Stores the reference \a value; removes the value for null and for what has no reference
    /// string.
    void write(
        nk::data::LinkedDocument *document, const QString &key, const QVariant &value) override;

Q_SIGNALS:
    /// From within the setter.
    void acceptedTypesChanged();

private:
    QScopedPointer<PackageReferenceFieldPrivate> d;
};

} // namespace nk::pm

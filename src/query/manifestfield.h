// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QJsonValue>
#include <QObject>
#include <QString>
#include <QVariant>

namespace nk::pm {

class PackageNode;

/// One top-level key of the packages' manifests, and how its value is read.
///
/// Declared inside a PackageListModel, where its name becomes a role, or a PackageData, where it
/// becomes a key. This class gives the JSON value as it stands; its subclasses give one type each,
/// with a default for a missing value and one of another type. GUI thread.
class NK_PM_EXPORT ManifestField : public QObject
{
    Q_OBJECT
    /// The top-level key of the manifest. A model takes it for its role when the field is declared
    /// and doesn't see a later change.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    /// A field without a name.
    explicit ManifestField(QObject *parent = nullptr);
    ~ManifestField() override;

    /// As it was set; null at first.
    QString name() const { return m_name; }
    /// Emits nameChanged(), then updateRequested(), unless it is the present one.
    void setName(const QString &name);

    /// The field's value for \a node; the default for null.
    QVariant read(const PackageNode *node);

protected:
    /// \a value as this field gives it. It is undefined if the manifest lacks the key, or \a node
    /// is null.
    virtual QVariant convert(const QJsonValue &value, const PackageNode *node);

public:
    /// Whether the value changes when the package is installed or goes away.
    virtual bool isStatusDependent() const;

Q_SIGNALS:
    /// From within the setter.
    void nameChanged();
    /// read() would give other values now. PackageData reads anew then, PackageListModel doesn't.
    void updateRequested();

private:
    QString m_name;
};

} // namespace nk::pm

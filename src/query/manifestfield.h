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
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit ManifestField(QObject *parent = nullptr);
    ~ManifestField() override;

    QString name() const { return m_name; }
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
    void nameChanged();
    /// read() would give other values now.
    void updateRequested();

private:
    QString m_name;
};

} // namespace nk::pm

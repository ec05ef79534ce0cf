// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QScopedPointer>
#include <QString>

namespace nk::pm {

struct HasManifestFieldPrivate;

/// Matches packages whose manifest has the top-level key name, with any value: null, false and ""
/// count. Restricts nothing while name is empty.
class NK_PM_EXPORT HasManifestField : public PackageMatcher
{
    Q_OBJECT
    /// A top-level key of the manifest; a path to a nested one isn't resolved.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    /// Restricts nothing at first.
    explicit HasManifestField(QObject *parent = nullptr);
    ~HasManifestField() override;

    /// As it was set; null at first.
    QString name() const;
    /// Emits nameChanged(), then updateRequested(), unless it is the present one.
    void setName(const QString &name);

    /// Reads the package's manifest, which the index then keeps.
    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    /// From within the setter.
    void nameChanged();

private:
    QScopedPointer<HasManifestFieldPrivate> d;
};

} // namespace nk::pm

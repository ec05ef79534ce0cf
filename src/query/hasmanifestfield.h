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
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit HasManifestField(QObject *parent = nullptr);
    ~HasManifestField() override;

    QString name() const;
    void setName(const QString &name);

    std::function<bool(PackageNode *)> matchFunction() override;

Q_SIGNALS:
    void nameChanged();

private:
    QScopedPointer<HasManifestFieldPrivate> d;
};

} // namespace nk::pm

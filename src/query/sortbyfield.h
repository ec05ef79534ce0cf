// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagesorter.h"

#include <QString>

namespace nk::pm {

/// A sorter by one top-level key of the manifest.
class NK_PM_EXPORT SortByField : public PackageSorter
{
    Q_OBJECT
    /// The top-level key of the manifest. A change takes effect at the next update of the models
    /// that use the sorter, but causes none.
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    /// Sorts nothing until it has a name.
    explicit SortByField(QObject *parent = nullptr);
    ~SortByField() override;

    /// As it was set; null at first.
    QString name() const { return m_name; }
    /// Emits nameChanged() unless it is the present one, and never updateRequested().
    void setName(const QString &name);

Q_SIGNALS:
    /// From within the setter.
    void nameChanged();

private:
    QString m_name;
};

} // namespace nk::pm

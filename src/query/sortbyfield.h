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
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)

public:
    explicit SortByField(QObject *parent = nullptr);
    ~SortByField() override;

    QString name() const { return m_name; }
    /// Takes effect at the next update of the models that use the sorter, but causes none:
    /// updateRequested() isn't emitted.
    void setName(const QString &name);

Q_SIGNALS:
    void nameChanged();

private:
    QString m_name;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packagesource.h"

#include <norvakpackagemanager_export.h>

#include <QScopedPointer>
#include <QString>

namespace nk::pm {

struct LocalPackageSourcePrivate;

/// A directory tree as a source: packages below "packages", keywords in "dictionary", links in
/// "links". It wins over every other kind of source.
///
/// A change in the tree is seen at the next update of the repository, whatever causes that; the
/// source itself never asks for one.
class NK_PM_EXPORT LocalPackageSource : public PackageSource
{
    Q_OBJECT

public:
    /// \a path is the root of the tree, which need not exist.
    explicit LocalPackageSource(const QString &path, QObject *parent = nullptr);
    ~LocalPackageSource() override;

    int priority() const override;
    std::unique_ptr<PackageAccessor> getAccessor() override;

private:
    QScopedPointer<LocalPackageSourcePrivate> d;
};

} // namespace nk::pm

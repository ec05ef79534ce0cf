// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QObject>
#include <QScopedPointer>

namespace nk::pm {

struct RepositoryPrivate;

/// A plain object that an application may hang its repository's things on. It has nothing of its
/// own.
class NK_PM_EXPORT Repository : public QObject
{
    Q_OBJECT

public:
    /// Does nothing but take its place below \a parent.
    explicit Repository(QObject *parent = nullptr);
    ~Repository() override;

private:
    QScopedPointer<RepositoryPrivate> d;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QObject>

#include <functional>

namespace nk::pm {

class PackageNode;

/// Says in which order a PackageListModel shows its packages. Like a PackageMatcher it makes a
/// closure, which a worker runs. GUI thread.
class NK_PM_EXPORT PackageSorter : public QObject
{
    Q_OBJECT

public:
    /// In QML the engine's object tree owns sorters; models that use one don't.
    explicit PackageSorter(QObject *parent = nullptr);
    ~PackageSorter() override;

    /// A strict ordering ("comes before") for the present property values; packages that are equal
    /// under it keep the index's order. An empty function sorts nothing. The function may be called
    /// on any thread, several at once, for nodes of any living index.
    virtual std::function<bool(PackageNode *, PackageNode *)> sortFunction() = 0;

Q_SIGNALS:
    /// sortFunction() would give another function now.
    void updateRequested();
};

} // namespace nk::pm

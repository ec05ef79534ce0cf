// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QObject>

#include <functional>

namespace nk::pm {

class PackageNode;

/// Says which packages a PackageListModel shows.
///
/// A matcher is never asked about a package itself: it makes a closure that owns copies of all it
/// needs, which a worker runs while the matcher may change or go away. GUI thread.
class NK_PM_EXPORT PackageMatcher : public QObject
{
    Q_OBJECT

public:
    /// In QML the engine's object tree owns matchers; models and groups that use one don't.
    explicit PackageMatcher(QObject *parent = nullptr);
    ~PackageMatcher() override;

    /// The test for the present property values. An empty function restricts nothing, and a group
    /// leaves it out. The function may be called on any thread, several at once, for nodes of any
    /// living index.
    virtual std::function<bool(PackageNode *)> matchFunction() = 0;

Q_SIGNALS:
    /// matchFunction() would give another function now.
    void updateRequested();
};

} // namespace nk::pm

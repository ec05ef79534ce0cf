// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/installlocation.h"

#include <norvakpackagemanager_export.h>

#include <QList>
#include <QObject>
#include <QScopedPointer>

#include <memory>

namespace nk::pm {

struct PackageInstallerPrivate;

/// One failure of an installer.
struct InstallError
{
    int code = 0;    ///< meaning depends on the installer that reports it
    QString message; ///< for the log
};

/// One running attempt to bring one package's files into an InstallLocation, with an installer for
/// each required package below it.
///
/// Work starts in the constructor of the concrete class; there is no pause and no retry, a retry is
/// a new tree. Destroying a root at any moment cancels its tree. GUI thread; pool threads touch no
/// installer.
class NK_PM_EXPORT PackageInstaller : public QObject
{
    Q_OBJECT

public:
    /// What has become of an installer together with the tree below it.
    enum Status {
        Failed = -1,    ///< nothing in the tree works any more, and something in it went wrong
        InProgress = 0, ///< something in the tree still works
        Succeeded = 1,  ///< everything in the tree finished without error
    };
    Q_ENUM(Status)

    /// \a location is the directory of the one package. A root has no parent: whoever made it
    /// destroys it.
    explicit PackageInstaller(const InstallLocation &location);
    ~PackageInstaller() override;

    /// Makes \a child part of this tree, with this installer as its owner. The status isn't
    /// recomputed until the child's changes. Null is ignored.
    void addChild(std::unique_ptr<PackageInstaller> &&child);

    /// Status of the tree below and including this installer. An installer may have finished before
    /// anybody could connect to it: read this after connecting.
    Status status() const;

    /// This installer's errors in the order of their arrival, then those of each child,
    /// recursively.
    QList<InstallError> errors() const;

    /// Whether this installer and, recursively, all its children have ended, well or not.
    bool isFinished() const;

Q_SIGNALS:
    /// status() has changed; at a root exactly once, when the last part of the tree has ended.
    void statusChanged();

protected:
    /// Notes a failure, for a later finish().
    void addError(const InstallError &error);
    /// The same from its two fields.
    void addError(int code, const QString &message);

    /// This installer's own work is over. A second call does nothing.
    void finish();

    /// As given to the constructor; for the concrete class to lay its files down in.
    InstallLocation &location();
    /// For reading only.
    const InstallLocation &location() const;

private Q_SLOTS:
    void updateStatus();

private:
    friend struct PackageInstallerPrivate;
    QScopedPointer<PackageInstallerPrivate> d;
};

} // namespace nk::pm

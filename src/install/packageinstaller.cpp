// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/packageinstaller.h"

#include <QPointer>

#include <algorithm>

namespace nk::pm {

struct PackageInstallerPrivate
{
    PackageInstallerPrivate(PackageInstaller *installer, const InstallLocation &installLocation)
        : q(installer)
        , location(installLocation)
    {}

    PackageInstaller::Status ownStatus() const;
    PackageInstaller::Status treeStatus() const;
    QList<PackageInstaller *> takeChildren();

    PackageInstaller *q;
    bool finished = false;
    PackageInstaller::Status status = PackageInstaller::InProgress;
    InstallLocation location;
    QList<InstallError> errors;
    QList<PackageInstaller *> children; // owned as QObject children
    bool rising = false; // statusChanged() is being emitted by the walk in updateStatus()
};

PackageInstaller::Status PackageInstallerPrivate::ownStatus() const
{
    if (!finished)
        return PackageInstaller::InProgress;
    return errors.isEmpty() ? PackageInstaller::Succeeded : PackageInstaller::Failed;
}

PackageInstaller::Status PackageInstallerPrivate::treeStatus() const
{
    PackageInstaller::Status result = ownStatus();
    for (auto child = children.cbegin();
         child != children.cend() && result != PackageInstaller::InProgress; ++child) {
        const PackageInstaller::Status childStatus = (*child)->d->status;
        if (childStatus != PackageInstaller::Succeeded)
            result = childStatus;
    }
    return result;
}

QList<PackageInstaller *> PackageInstallerPrivate::takeChildren()
{
    QList<PackageInstaller *> taken;
    taken.swap(children);
    for (PackageInstaller *child : qAsConst(taken))
        child->setParent(nullptr);
    return taken;
}

// Trees may be chains of thousands of installers. Whatever visits a tree keeps its own list of what
// is left to visit, since one call inside another per level would exhaust the stack.

PackageInstaller::PackageInstaller(const InstallLocation &location)
    : d(new PackageInstallerPrivate(this, location))
{}

PackageInstaller::~PackageInstaller()
{
    if (auto *owner = qobject_cast<PackageInstaller *>(parent()))
        owner->d->children.removeOne(this);
    QList<PackageInstaller *> doomed = d->takeChildren();
    while (!doomed.isEmpty()) {
        PackageInstaller *installer = doomed.takeLast();
        doomed += installer->d->takeChildren();
        delete installer;
    }
}

void PackageInstaller::addChild(std::unique_ptr<PackageInstaller> &&child)
{
    PackageInstaller *installer = child.release();
    if (!installer)
        return;
    installer->setParent(this);
    connect(installer, &PackageInstaller::statusChanged, this, &PackageInstaller::updateStatus);
    d->children.append(installer);
}

PackageInstaller::Status PackageInstaller::status() const
{
    return d->status;
}

QList<InstallError> PackageInstaller::errors() const
{
    QList<InstallError> result;
    QList<const PackageInstaller *> left{this};
    while (!left.isEmpty()) {
        const PackageInstaller *installer = left.takeLast();
        result += installer->d->errors;
        const QList<PackageInstaller *> &children = installer->d->children;
        std::copy(children.crbegin(), children.crend(), std::back_inserter(left));
    }
    return result;
}

bool PackageInstaller::isFinished() const
{
    QList<const PackageInstaller *> left{this};
    while (!left.isEmpty()) {
        const PackageInstaller *installer = left.takeLast();
        if (!installer->d->finished)
            return false;
        for (const PackageInstaller *child : qAsConst(installer->d->children))
            left.append(child);
    }
    return true;
}

void PackageInstaller::addError(const InstallError &error)
{
    d->errors.append(error);
}

void PackageInstaller::addError(int code, const QString &message)
{
    addError(InstallError{code, message});
}

void PackageInstaller::finish()
{
    if (d->finished)
        return;
    d->finished = true;
    updateStatus();
}

InstallLocation &PackageInstaller::location()
{
    return d->location;
}

const InstallLocation &PackageInstaller::location() const
{
    return d->location;
}

void PackageInstaller::updateStatus()
{
    // A child whose change is on its way up in the walk below: the walk comes here next.
    const auto *child = qobject_cast<PackageInstaller *>(sender());
    if (child && child->parent() == this && child->d->rising)
        return;

    QPointer<PackageInstaller> installer(this);
    while (installer) {
        const Status status = installer->d->treeStatus();
        if (status == installer->d->status)
            return;
        installer->d->status = status;
        installer->d->rising = true;
        Q_EMIT installer->statusChanged();
        // A listener may have destroyed the tree, or a part of it.
        if (!installer)
            return;
        installer->d->rising = false;
        installer = qobject_cast<PackageInstaller *>(installer->parent());
    }
}

} // namespace nk::pm

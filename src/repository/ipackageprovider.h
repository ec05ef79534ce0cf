// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QString>

namespace nk::pm {

class PackageReference;
class PackageRepository;

/// How QML objects and documents reach a repository. The application implements it on a QObject of
/// its own (Q_INTERFACES(nk::pm::IPackageProvider)) and hands that object around. GUI thread.
class IPackageProvider
{
public:
    virtual ~IPackageProvider() = default;

    /// The repository behind this provider; null if there is none at the moment.
    virtual PackageRepository *packageRepository() = 0;
    /// The reference for package \a id, as PackageRepository::packageReference() gives it.
    virtual PackageReference *packageReference(const QString &id) = 0;
};

} // namespace nk::pm

Q_DECLARE_INTERFACE(nk::pm::IPackageProvider, "norvak.IPackageProvider/1.0")

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/ipackageprovider.h"
#include "repository/packagerepository.h"
#include "support/memorysource.h"

#include <QPointer>

namespace nk::pm::test {

/// What an application hands to its QML objects: a provider with a repository over one source.
class TestProvider : public QObject, public IPackageProvider
{
    Q_OBJECT
    Q_INTERFACES(nk::pm::IPackageProvider)

public:
    /// A provider whose repository has no index yet; publish() gives it one.
    TestProvider();

    MemorySource source; ///< edit its catalogue, then publish()
    QPointer<PackageRepository> repository;

    /// Waits until an index of the source's present catalogue is in place; false if none comes.
    bool publish();

    PackageRepository *packageRepository() override { return repository; }
    Q_INVOKABLE nk::pm::PackageReference *packageReference(const QString &id) override;

private:
    bool m_isAdded = false;
};

} // namespace nk::pm::test

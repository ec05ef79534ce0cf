// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "references/packagereference.h"
#include "repository/packagerepository.h"
#include "support/memorysource.h"

#include <QMetaEnum>
#include <QSignalSpy>

namespace nk::pm::test {

/// A repository of one source in memory, with everything that its references said.
struct Scene
{
    Scene() { repository.addSource(&source); }

    PackageReference *watch(const QString &id)
    {
        PackageReference *reference = repository.packageReference(id);
        const auto note = [this](const QString &line) { log << line; };
        QObject::connect(reference, &PackageReference::statusChanged, [=] {
            note(QMetaEnum::fromType<PackageReference::Status>().valueToKey(reference->status()));
        });
        QObject::connect(
            reference, &PackageReference::typeChanged, [=] { note("type " + reference->type()); });
        QObject::connect(reference, &PackageReference::updated, [=] { note("updated"); });
        return reference;
    }
    /// Publishes the catalogue and waits for its index.
    bool publish()
    {
        QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
        source.publish();
        return spy.wait(60000);
    }

    MemorySource source;
    PackageRepository repository{PackageRepository::DoNotPersistSources};
    QStringList log;
};

} // namespace nk::pm::test

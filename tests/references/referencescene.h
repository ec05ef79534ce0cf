// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "references/packagereference.h"
#include "support/testprovider.h"

#include <QMetaEnum>

namespace nk::pm::test {

/// A repository over one source in memory, with everything that its references said.
struct Scene : TestProvider
{
    PackageReference *watch(const QString &id)
    {
        PackageReference *reference = repository->packageReference(id);
        const auto note = [this](const QString &line) { log << line; };
        QObject::connect(reference, &PackageReference::statusChanged, [=] {
            note(QMetaEnum::fromType<PackageReference::Status>().valueToKey(reference->status()));
        });
        QObject::connect(
            reference, &PackageReference::typeChanged, [=] { note("type " + reference->type()); });
        QObject::connect(reference, &PackageReference::updated, [=] { note("updated"); });
        return reference;
    }
    /// The newest installer of package "p".
    MemoryInstaller *installer() const { return source.installer("p"); }

    QStringList log;
};

} // namespace nk::pm::test

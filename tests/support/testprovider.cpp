// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testprovider.h"

#include "references/packagereference.h"

#include <QSignalSpy>

namespace nk::pm::test {

TestProvider::TestProvider()
    : repository(new PackageRepository(PackageRepository::DoNotPersistSources, this))
{}

bool TestProvider::publish()
{
    QSignalSpy changed(repository, &PackageRepository::packageIndexChanged);
    if (std::exchange(m_isAdded, true))
        source.publish();
    else
        repository->addSource(&source);
    return changed.wait(60'000);
}

PackageReference *TestProvider::packageReference(const QString &id)
{
    return repository ? repository->packageReference(id) : nullptr;
}

} // namespace nk::pm::test

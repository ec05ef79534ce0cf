// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Lists the packages of the catalogue directory that is the one argument.

#include <index/packageindex.h>
#include <index/packageindexnode.h>
#include <repository/packagerepository.h>
#include <sources/localpackagesource.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTextStream>

#include <norvak/locations.h>

using namespace nk::pm;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    QTemporaryDir data;
    nk::Locations::setDataLocation(data.path());

    LocalPackageSource source(application.arguments().value(1), nullptr);
    PackageRepository repository(PackageRepository::DoNotPersistSources);
    QObject::connect(&repository, &PackageRepository::packageIndexChanged, [&] {
        const auto packages =
            PackageIndex::selectPackages(repository.packageIndex(), QString(), {}, {});
        for (const PackageNode *package : packages)
            QTextStream(stdout) << package->id() << '\n';
        application.quit();
    });
    repository.addSource(&source);
    return application.exec();
}

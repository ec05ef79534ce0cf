// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// ledgersaver DATA-DIRECTORY NAME COUNT SIZE
//
// Persists COUNT snapshots of SIZE bytes, one after the other, for the service "shared" below a
// data directory. Number N of them has the ETag "NAME-N" and the content that belongs to N. Writes
// N on a line of its own before it begins with it. Its parent kills it on the way, or runs two at
// once.

#include "sources/ledgerstore.h"
#include "support/testfiles.h"

#include <norvak/locations.h>

#include <QCoreApplication>
#include <cstdio>

using namespace nk::pm;
using namespace nk::pm::test;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 5)
        return 2;
    nk::Locations::setDataLocation(arguments.at(1));
    QLoggingCategory::setFilterRules("norvak.packageserver=false");
    const LedgerStore store("shared");
    // Made before, so that most of the time is spent on the way to the disk.
    const int size = arguments.at(4).toInt();
    const QByteArray contents[] = {numberedContent(0, size), numberedContent(1, size)};
    for (int i = 0; i < arguments.at(3).toInt(); ++i) {
        std::printf("%d\n", i);
        std::fflush(stdout);
        const QByteArray etag = arguments.at(2).toLatin1() + '-' + QByteArray::number(i);
        store.save({etag, contents[i % 2]});
    }
    return 0;
}

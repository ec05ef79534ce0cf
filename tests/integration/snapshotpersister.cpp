// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Persists one snapshot after the other into the directory that is the one argument, until it is
// killed. Each has the same size and consists of one byte, which its name tells.

#include "sources/couchdbsnapshots.h"
#include "support/testfiles.h"

#include <QTemporaryDir>

#include <cstdio>

using namespace nk::pm;

int main(int argc, char *argv[])
{
    if (argc != 2)
        return 2;
    const QDir directory(QString::fromLocal8Bit(argv[1]));
    const QTemporaryDir downloads;
    const QString download = downloads.filePath("view");
    for (int number = 0;; ++number) {
        test::writeFile(download, QByteArray(1024 * 1024, char('a' + number % 26)));
        persistSnapshot(directory, {QString("\"%1\"").arg(number), download});
        std::puts("persisted");
        std::fflush(stdout);
    }
}

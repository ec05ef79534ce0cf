// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "fuzztarget.h"

#include "repository/packageaccessor.h"

#include <QFile>
#include <QUrl>

#include <cstdio>
#include <cstdlib>

namespace nk::pm::fuzz {

void require(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

void readAll(const PackageAccessor &accessor)
{
    accessor.languages();
    for (int i = 0; i < accessor.packageCount(); ++i) {
        accessor.packageInfo(i);
        accessor.manifest(i);
    }
    for (int i = 0; i < accessor.keywordCount(); ++i)
        accessor.keywordInfo(i);
    for (int i = 0; i < accessor.linkCount(); ++i)
        accessor.linkInfo(i);
}

void writeInput(const QString &path, const QByteArray &input)
{
    QFile file(path);
    require(
        file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
            && file.write(input) == input.size(),
        "The input can't be written for the reader: is the disk full?");
}

} // namespace nk::pm::fuzz

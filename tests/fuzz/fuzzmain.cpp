// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// What libFuzzer calls. Beside libFuzzer's own options a target takes "--make-corpus DIRECTORY",
// which writes its seeds there and ends.

#include "environment.h"
#include "fuzztarget.h"

#include <QCoreApplication>
#include <QDir>

#include <cstring>

using namespace nk::pm::fuzz;

static void makeCorpus(const QString &directory)
{
    require(QDir().mkpath(directory), "The corpus directory can't be made");
    for (const Seed &seed : seeds())
        writeInput(QDir(directory).filePath(QString::fromLatin1(seed.name)), seed.input);
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    static const Environment environment;
    if (*argc == 3 && std::strcmp((*argv)[1], "--make-corpus") == 0) {
        makeCorpus(QString::fromLocal8Bit((*argv)[2]));
        std::exit(0);
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const char *data, size_t size)
{
    runOnce(QByteArray::fromRawData(data, int(size)));
    return 0;
}

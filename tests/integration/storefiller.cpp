// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// storefiller DATA-DIRECTORY COUNT SIZE
//
// Fills the file store below a data directory with COUNT files of SIZE bytes, all of them in the
// works at once, as downloads are. Writes "open" when all targets are open, then the number of each
// committed file, a line each. Its parent kills it on the way, or runs two at once.

#include "install/filestore.h"
#include "support/testfiles.h"

#include <QCoreApplication>
#include <QFile>
#include <algorithm>
#include <array>
#include <cstdio>
#include <norvak/locations.h>

using namespace nk::pm;
using namespace nk::pm::test;

static void say(const char *line)
{
    std::puts(line);
    std::fflush(stdout);
}

static bool canOpenMore()
{
    std::array<QFile, 20> files;
    return std::all_of(files.begin(), files.end(), [](QFile &file) {
        file.setFileName("/dev/null");
        return file.open(QIODevice::ReadOnly);
    });
}

static int fill(int count, int size)
{
    const QSharedPointer<FileStore> store = FileStore::instance();
    QVector<FileStoreTarget *> targets;
    for (int i = 0; i < count; ++i) {
        const QByteArray digest =
            QCryptographicHash::hash(numberedContent(i, size), QCryptographicHash::Sha224);
        targets.append(store->createTarget(digest.toHex(), QCryptographicHash::Sha224));
        if (!targets.last())
            return canOpenMore() ? 1 : 2;
    }
    say("open");
    for (int i = 0; i < count; ++i) {
        if (targets.at(i)->write(numberedContent(i, size)) != size
            || targets.at(i)->commit() != FileStoreTarget::CommitOk)
            return 2;
        say(qPrintable(QString::number(i)));
    }
    return 0;
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() != 4)
        return 2;
    nk::Locations::setDataLocation(arguments.at(1));
    return fill(arguments.at(2).toInt(), arguments.at(3).toInt());
}

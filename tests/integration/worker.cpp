// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

// Writes what is persisted, until its parent kills it; or two of it write at once.
//
// worker store DATA-DIRECTORY COUNT SIZE
//     Fills the file store with COUNT files, all of them in the works at once, as downloads are.
//     Says "open" when all targets are open, then the number of each committed file.
// worker ledger DATA-DIRECTORY COUNT SIZE NAME
//     Persists COUNT ledgers for the service "shared". Number N has the ETag "NAME-N" and the
//     content N % 2. Says N before it begins with it.
// worker snapshots DIRECTORY COUNT SIZE
//     Persists COUNT snapshots of a view, whose name is their number N and whose content is N % 2.
//     Says N when it is persisted.

#include "install/filestore.h"
#include "sources/couchdbsnapshots.h"
#include "sources/ledgerstore.h"
#include "support/testfiles.h"

#include <norvak/locations.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>

using namespace nk::pm;
using namespace nk::pm::test;

static void say(const QByteArray &line)
{
    std::puts(line.constData());
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

static int fillStore(int count, int size)
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
        say(QByteArray::number(i));
    }
    return 0;
}

static int saveLedgers(int count, int size, const QByteArray &name)
{
    const LedgerStore store("shared");
    const QByteArray contents[] = {numberedContent(0, size), numberedContent(1, size)};
    for (int i = 0; i < count; ++i) {
        say(QByteArray::number(i));
        store.save({name + '-' + QByteArray::number(i), contents[i % 2]});
    }
    return 0;
}

static int persistSnapshots(const QDir &directory, int count, int size)
{
    const QTemporaryDir downloads;
    const QString download = downloads.filePath("view");
    for (int i = 0; i < count; ++i) {
        writeFile(download, numberedContent(i % 2, size));
        persistSnapshot(directory, {QString("\"%1\"").arg(i), download});
        say(QByteArray::number(i));
    }
    return 0;
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QLoggingCategory::setFilterRules("norvak.packageserver=false");
    const QStringList arguments = app.arguments();
    const QString what = arguments.value(1);
    const QString directory = arguments.value(2);
    const int count = arguments.value(3).toInt();
    const int size = arguments.value(4).toInt();
    nk::Locations::setDataLocation(directory);
    if (what == "store")
        return fillStore(count, size);
    if (what == "ledger")
        return saveLedgers(count, size, arguments.value(5).toLatin1());
    return what == "snapshots" ? persistSnapshots(directory, count, size) : 2;
}

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storemending.h"

#include "install/filecopy.h"

#include <QFile>
#include <QFileInfo>

namespace nk::pm {

namespace {

bool isStill(const QString &path, const FileIdentity &identity)
{
    const auto status = fileStatus(path);
    return status && status->identity == identity;
}

/// A reader finds the damaged file or the good one at each moment.
bool replace(const QString &path, const FileIdentity &damaged, const QString &good)
{
    const QString staged =
        QStringLiteral("%1/.%2.mended").arg(QFileInfo(path).path()).arg(damaged.inode);
    QFile::remove(staged); // of a repair that was killed
    if (!hardLink(good, staged) && !copyFile(good, staged))
        return false;
    if (isStill(path, damaged))
        return moveOver(staged, path);
    QFile::remove(staged);
    return true; // swept meanwhile, or another repair was here
}

} // namespace

bool moveOut(DamagedFile &damaged)
{
    StoredFile &file = damaged.file;
    const QString removed = removedPath(file.path, file.status);
    if (!isStill(file.path, file.status.identity) || !moveOver(file.path, removed))
        return false;
    if (!isStill(removed, file.status.identity)) { // a good one came in that moment
        hardLink(removed, file.path);
        QFile::remove(removed);
        return false;
    }
    file.path = removed;
    damaged.isInStore = false;
    return true;
}

QStringList replaceInstalled(DamagedFile &damaged, const QString &good)
{
    QStringList mended;
    QStringList left;
    for (const QString &path : qAsConst(damaged.paths))
        (replace(path, damaged.file.status.identity, good) ? mended : left).append(path);
    damaged.paths = left;
    if (left.isEmpty())
        QFile::remove(damaged.file.path);
    return mended;
}

} // namespace nk::pm

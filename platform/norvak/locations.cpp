// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/locations.h"

#include <QReadWriteLock>
#include <QStandardPaths>

namespace nk {

namespace {

struct DataLocation
{
    QReadWriteLock lock;
    QString path;
};

Q_GLOBAL_STATIC(DataLocation, location)

} // namespace

QDir Locations::dataLocation()
{
    // A pool thread may still ask while the process is on its way out.
    if (!location.isDestroyed()) {
        QReadLocker locker(&location->lock);
        if (!location->path.isEmpty())
            return QDir(location->path);
    }
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
}

void Locations::setDataLocation(const QString &path)
{
    QWriteLocker locker(&location->lock);
    location->path = path;
}

} // namespace nk

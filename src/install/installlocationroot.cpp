// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installlocationroot.h"

#include "install/logging.h"
#include "install/stalelocations.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator64>
#include <QtConcurrent>

#include <atomic>
#include <chrono>

namespace nk::pm {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds lockTimeout = 1s;

QString unusedDirectory()
{
    const QString parent = installRoots();
    QString path;
    do {
        const quint64 number = QRandomGenerator64::global()->generate();
        const QByteArray bytes(reinterpret_cast<const char *>(&number), sizeof number);
        const QByteArray name =
            bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
        path = parent + QLatin1Char('/') + QLatin1String(name);
    } while (QFileInfo::exists(path));
    return path;
}

/// Where indexes come faster than sweeps end, one sweep is enough: they would pile up in the pool.
void sweepUnlessSweeping()
{
    static std::atomic_bool isSweeping{false};
    if (isSweeping.exchange(true))
        return;
    QtConcurrent::run([] {
        removeStaleLocations();
        isSweeping = false;
    });
}

} // namespace

InstallLocationRoot::InstallLocationRoot()
    : directory(unusedDirectory())
{
    create();
    sweepUnlessSweeping();
}

void InstallLocationRoot::create()
{
    if (!QDir().mkpath(directory)) {
        qCCritical(lcInstall) << "Failed to create package install location";
        return;
    }
    m_lockFile = std::make_unique<QLockFile>(directory + QLatin1String("/.lock"));
    m_lockFile->setStaleLockTime(0);
    if (!m_lockFile->tryLock(int(lockTimeout.count())))
        qCCritical(lcInstall) << "Failed to lock package install location";
}

InstallLocation InstallLocationRoot::createLocation()
{
    return InstallLocation(QSharedPointer<InstallLocationRoot>::create(), QStringLiteral("."));
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerstore.h"

#include "sources/directoryname.h"

#include <norvak/locations.h>
#include <norvakutil/fileutils.h>

#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QSaveFile>
#include <QScopeGuard>

namespace nk::pm {

Q_LOGGING_CATEGORY(packageServerLog, "norvak.packageserver")

LedgerStore::LedgerStore(const QString &uuid)
{
    if (!namesEntry(uuid))
        return;
    m_uuid = uuid;
    m_directory.setPath(
        nk::Locations::dataLocation().filePath(QStringLiteral("packages/servers/%1").arg(uuid)));
}

LedgerSnapshot LedgerStore::load() const
{
    LedgerSnapshot snapshot;
    if (!isUsable() || !QFile::exists(ledgerPath()))
        return snapshot;
    QLockFile lock(lockPath());
    lock.lock();
    QFile file(ledgerPath());
    if (!file.open(QIODevice::ReadOnly)) {
        qCCritical(packageServerLog) << "Failed to open persisted ledger file" << ledgerPath();
        return snapshot;
    }
    QDataStream stream(&file);
    stream >> snapshot.etag >> snapshot.ledger;
    qCDebug(packageServerLog) << "Loaded persisted ledger of" << m_uuid << "ETag" << snapshot.etag;
    return snapshot;
}

void LedgerStore::save(const LedgerSnapshot &snapshot) const
{
    if (!isUsable())
        return;
    QElapsedTimer timer;
    timer.start();
    if (!m_directory.exists() && !m_directory.mkpath(QStringLiteral("."))) {
        qCCritical(packageServerLog)
            << "Failed to create persistence directory forledger persistence of" << m_uuid;
        return;
    }
    QLockFile lock(lockPath());
    const auto finish = qScopeGuard([&] {
        lock.unlock();
        qCDebug(packageServerLog) << "Persisting ledger of" << m_uuid << "took"
                                  << double(timer.nsecsElapsed()) / 1e6 << "msecs";
    });
    if (lock.lock())
        removeRemains();
    if (holds(snapshot.etag)) {
        qCDebug(packageServerLog) << "Skipping ledger persistence for" << m_uuid
                                  << "- already persisted";
        return;
    }
    qCDebug(packageServerLog) << "Persisting ledger for package server" << m_uuid << "ETag"
                              << snapshot.etag;
    if (write(snapshot))
        nk::util::FileUtils::syncFile(ledgerPath());
}

bool LedgerStore::holds(const QByteArray &etag) const
{
    QFile file(ledgerPath());
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QDataStream stream(&file);
    QByteArray there;
    stream >> there;
    return there == etag;
}

bool LedgerStore::write(const LedgerSnapshot &snapshot) const
{
    QSaveFile file(ledgerPath());
    const auto fail = [&file](const char *what) {
        qCCritical(packageServerLog) << what << file.error() << file.errorString();
        return false;
    };
    if (!file.open(QIODevice::WriteOnly))
        return fail("Failed to open target file for ledger pesistence:");
    QDataStream stream(&file);
    stream << snapshot.etag << snapshot.ledger;
    // A disk that takes a part of a write is no error to the file, but to the stream.
    if (stream.status() != QDataStream::Ok)
        file.cancelWriting();
    return file.commit() || fail("Failed to commit target file for ledger pesistence:");
}

// A process that died while it wrote has left its temporary file, as QSaveFile names them, and its
// lock, which is ours now.
void LedgerStore::removeRemains() const
{
    QDir directory(m_directory);
    const QStringList remains =
        directory.entryList({QStringLiteral("ledger.??????")}, QDir::Files | QDir::Hidden);
    for (const QString &name : remains)
        directory.remove(name);
}

} // namespace nk::pm

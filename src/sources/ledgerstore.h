// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QDir>
#include <QLoggingCategory>

namespace nk::pm {

/// What the package server source writes: "norvak.packageserver", all levels by default.
Q_DECLARE_LOGGING_CATEGORY(packageServerLog)

/// A ledger as the server sent it.
struct LedgerSnapshot
{
    QByteArray etag; ///< empty if the server gave none
    QByteArray ledger;
};

/// Where the ledger of one service is kept on disk: the file "ledger", and ".lock", which its
/// readers and writers of all processes take. A value; its operations may run on any thread.
class LedgerStore
{
public:
    /// \a uuid is the service's. A uuid that can't name a directory of its own (empty, with a
    /// separator or a leading dot) gives a store that keeps nothing.
    explicit LedgerStore(const QString &uuid);

    /// What is there, as far as it can be read; its content isn't judged. Waits for a writer.
    LedgerSnapshot load() const;

    /// Puts \a snapshot there, unless one with the same ETag is. Waits for other processes, writes
    /// and syncs; a reader finds the old or the new snapshot, whatever happens meanwhile.
    void save(const LedgerSnapshot &snapshot) const;

private:
    bool isUsable() const { return !m_uuid.isEmpty(); }
    QString ledgerPath() const { return m_directory.filePath(QStringLiteral("ledger")); }
    QString lockPath() const { return m_directory.filePath(QStringLiteral(".lock")); }
    bool holds(const QByteArray &etag) const;
    bool write(const LedgerSnapshot &snapshot) const;
    void removeRemains() const;

    QString m_uuid;
    QDir m_directory;
};

} // namespace nk::pm

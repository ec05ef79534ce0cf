// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerfiles.h"

#include "sources/ledgerformat.h"

#include <QtEndian>

#include <algorithm>

namespace nk::pm {

namespace {

// The record at `position`, which is then behind it. Only for records that were read before.
LedgerFile takeFile(const char *&position)
{
    LedgerFile file;
    file.hash = position;
    position += ledger::hashSize;
    file.name.length = qFromLittleEndian<quint16>(position);
    position += sizeof file.name.length;
    file.name.data = position;
    position += file.name.length;
    return file;
}

} // namespace

QByteArray fileDigest(const char *hash)
{
    return QByteArray::fromRawData(hash, ledger::hashSize).toHex();
}

std::optional<LedgerFiles> LedgerFiles::read(LedgerCursor &cursor, int count)
{
    LedgerFiles files;
    files.m_records = cursor.position();
    files.m_count = count;
    for (int i = 0; i < count; ++i) {
        const char *hash = cursor.bytes(ledger::hashSize);
        cursor.string();
        if (!cursor.ok() || !hash)
            return std::nullopt;
    }
    return files;
}

const char *LedgerFiles::hashOf(const QByteArray &name) const
{
    const char *hash = nullptr;
    const char *position = m_records;
    for (int i = 0; i < m_count; ++i) {
        const LedgerFile file = takeFile(position);
        if (file.name.bytes() == name)
            hash = file.hash;
    }
    return hash;
}

bool LedgerFiles::hasHash(const QByteArray &hash) const
{
    const char *position = m_records;
    for (int i = 0; i < m_count; ++i) {
        if (QByteArray::fromRawData(takeFile(position).hash, ledger::hashSize) == hash)
            return true;
    }
    return false;
}

QVector<LedgerFile> LedgerFiles::sortedUnique() const
{
    QVector<LedgerFile> files;
    files.reserve(m_count);
    const char *position = m_records;
    for (int i = 0; i < m_count; ++i)
        files.append(takeFile(position));
    const auto before = [](const LedgerFile &a, const LedgerFile &b) {
        return a.name.view() < b.name.view();
    };
    std::stable_sort(files.begin(), files.end(), before);
    // From the back, where the last record of a name is met first.
    const auto same = [](const LedgerFile &a, const LedgerFile &b) {
        return a.name.view() == b.name.view();
    };
    const auto kept = std::unique(files.rbegin(), files.rend(), same);
    files.erase(files.begin(), kept.base());
    return files;
}

} // namespace nk::pm

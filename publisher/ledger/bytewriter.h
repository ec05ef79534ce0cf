// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>

namespace nk::pm::publisher {

/// Appends the fields of a ledger to a byte array. What doesn't fit its field, or makes the whole
/// too large, isn't written, and fits() is false from then on.
class ByteWriter
{
public:
    /// Every client fetches a ledger whole and keeps it in memory.
    static constexpr int largestResult = 1 << 30;

    bool fits() const { return m_fits; }
    QByteArray result() const { return m_bytes; }

    void u8(qint64 value) { integer(value, 1); }
    void u16(qint64 value) { integer(value, 2); }
    void u32(qint64 value) { integer(value, 4); }
    void raw(const QByteArray &bytes);
    /// A u16 length and the bytes.
    void string(const QByteArray &bytes);

    int position() const { return m_bytes.size(); }
    /// Overwrites the u32 at \a position, which was written before.
    void patchU32(int position, quint32 value);

private:
    void integer(qint64 value, int width);

    QByteArray m_bytes;
    bool m_fits = true;
};

} // namespace nk::pm::publisher

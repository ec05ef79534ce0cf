// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledger/bytewriter.h"

#include <QtEndian>

namespace nk::pm::publisher {

void ByteWriter::integer(qint64 value, int width)
{
    m_fits = m_fits && value >= 0 && value >> (8 * width) == 0;
    const quint64 little = qToLittleEndian(quint64(value));
    raw(QByteArray(reinterpret_cast<const char *>(&little), width));
}

void ByteWriter::raw(const QByteArray &bytes)
{
    m_fits = m_fits && bytes.size() <= largestResult - m_bytes.size();
    if (m_fits)
        m_bytes += bytes;
}

void ByteWriter::string(const QByteArray &bytes)
{
    u16(bytes.size());
    raw(bytes);
}

void ByteWriter::patchU32(int position, quint32 value)
{
    if (m_fits)
        qToLittleEndian(value, m_bytes.data() + position);
}

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgercursor.h"

#include "sources/ledgerformat.h"

#include <QtEndian>

#include <algorithm>

namespace nk::pm {

LedgerCursor::LedgerCursor(const QByteArray &segment)
    : m_position(segment.constData() + std::min(segment.size(), ledger::segmentFramingSize))
    , m_end(segment.constData() + segment.size())
{}

template<typename Integer>
Integer LedgerCursor::integer()
{
    m_ok = has(sizeof(Integer));
    if (!m_ok)
        return 0;
    const auto value = qFromLittleEndian<Integer>(m_position);
    m_position += sizeof(Integer);
    return value;
}

quint8 LedgerCursor::u8()
{
    return integer<quint8>();
}

quint16 LedgerCursor::u16()
{
    return integer<quint16>();
}

quint32 LedgerCursor::u32()
{
    return integer<quint32>();
}

const char *LedgerCursor::bytes(int size)
{
    if (!has(size))
        return nullptr;
    const char *data = m_position;
    m_position += size;
    return data;
}

LedgerString LedgerCursor::string()
{
    const quint16 length = u16();
    if (!has(length)) {
        m_ok = false;
        return {};
    }
    const LedgerString string{length, m_position};
    m_position += length;
    return string;
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localmanifests.h"

#include <QIODevice>

#include <algorithm>

namespace nk::pm {

LocalManifests::LocalManifests(int capacity)
    : m_capacity(capacity)
{}

LocalManifests::Slice LocalManifests::append(QIODevice &device)
{
    const int offset = m_bytes.size();
    const int length = int(std::min<qint64>(device.size(), longestManifest));
    if (length > m_capacity - offset)
        return {offset, 0};
    m_bytes.resize(offset + length);
    // The file may have become shorter in the meantime, or break off.
    const qint64 count = std::max<qint64>(device.read(m_bytes.data() + offset, length), 0);
    m_bytes.chop(length - int(count));
    return {offset, qint32(count)};
}

void LocalManifests::squeeze()
{
    m_bytes.squeeze();
}

QByteArray LocalManifests::view(Slice slice) const
{
    return QByteArray::fromRawData(m_bytes.constData() + slice.offset, slice.length);
}

} // namespace nk::pm

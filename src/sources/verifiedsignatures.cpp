// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/verifiedsignatures.h"

#include <QMutexLocker>

#include <cstring>

namespace nk::pm {

uint qHash(const SignatureDigest &digest, uint seed)
{
    // The bytes are as good as random already.
    uint hash = 0;
    std::memcpy(&hash, digest.bytes.data(), sizeof hash);
    return hash ^ seed;
}

VerifiedSignatures::VerifiedSignatures(int capacity)
    : m_capacity(capacity)
{}

VerifiedSignatures &VerifiedSignatures::instance()
{
    static VerifiedSignatures signatures;
    return signatures;
}

VerifiedSignatures::Snapshot VerifiedSignatures::snapshot() const
{
    const QMutexLocker locker(&m_mutex);
    return m_digests;
}

void VerifiedSignatures::remember(const QVector<SignatureDigest> &digests)
{
    const int count = std::min(digests.size(), m_capacity);
    const QMutexLocker locker(&m_mutex);
    if (m_digests.size() + count > m_capacity)
        m_digests.clear();
    m_digests.reserve(m_digests.size() + count);
    for (int i = 0; i < count; ++i)
        m_digests.insert(digests.at(i));
}

void VerifiedSignatures::clear()
{
    const QMutexLocker locker(&m_mutex);
    m_digests.clear();
}

} // namespace nk::pm

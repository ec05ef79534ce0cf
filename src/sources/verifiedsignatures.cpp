// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/verifiedsignatures.h"

#include <algorithm>
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
    : m_digests(std::make_shared<Set>())
    , m_capacity(capacity)
{}

VerifiedSignatures &VerifiedSignatures::instance()
{
    static VerifiedSignatures signatures;
    return signatures;
}

std::shared_ptr<const VerifiedSignatures::Set> VerifiedSignatures::snapshot() const
{
    const std::lock_guard<std::mutex> locker(m_mutex);
    return m_digests;
}

void VerifiedSignatures::remember(const QVector<SignatureDigest> &digests)
{
    if (digests.isEmpty())
        return;
    const int count = std::min(digests.size(), m_capacity);
    auto next = std::make_shared<Set>();
    const std::lock_guard<std::mutex> locker(m_mutex);
    const int kept = std::min(m_digests->size(), m_capacity - count);
    next->reserve(kept + count);
    for (auto old = m_digests->cbegin(); next->size() < kept; ++old)
        next->insert(*old);
    for (int i = 0; i < count; ++i)
        next->insert(digests.at(i));
    m_digests = next;
}

void VerifiedSignatures::clear()
{
    auto next = std::make_shared<Set>();
    const std::lock_guard<std::mutex> locker(m_mutex);
    m_digests = next;
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>
#include <QSet>
#include <QVector>

#include <array>
#include <memory>
#include <mutex>

namespace nk::pm {

/// What stands for one valid signature: the SHA3-256 digest of key, signature and signed content.
struct SignatureDigest
{
    static constexpr int size = 32;
    std::array<char, size> bytes{};

    bool operator==(const SignatureDigest &other) const { return bytes == other.bytes; }
};

uint qHash(const SignatureDigest &digest, uint seed = 0);

/// The package signatures that this process has found valid, so that the next build over a ledger
/// with mostly the same packages need not check them again.
///
/// In memory only, and bounded: beyond \a capacity newcomers take the places of others, no more of
/// them than it needs. All operations are safe on any thread; a published set is never changed,
/// only replaced.
class NK_PM_EXPORT VerifiedSignatures
{
public:
    using Set = QSet<SignatureDigest>;
    /// About 64 bytes each.
    static constexpr int defaultCapacity = 1 << 18;

    explicit VerifiedSignatures(int capacity = defaultCapacity);

    /// The one that all readers of the process share.
    static VerifiedSignatures &instance();

    /// The set as it stands, never null.
    std::shared_ptr<const Set> snapshot() const;
    void remember(const QVector<SignatureDigest> &digests);
    void clear();

private:
    Q_DISABLE_COPY(VerifiedSignatures)

    mutable std::mutex m_mutex;
    std::shared_ptr<const Set> m_digests;
    const int m_capacity;
};

} // namespace nk::pm

Q_DECLARE_TYPEINFO(nk::pm::SignatureDigest, Q_PRIMITIVE_TYPE);

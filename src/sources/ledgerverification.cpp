// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerverification.h"

#include "sources/ledgerformat.h"
#include "sources/signedcontent.h"
#include "sources/verifiedsignatures.h"

#include <QCryptographicHash>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>
#include <atomic>

namespace nk::pm {

using nk::crypto::ed25519::PublicKey;

namespace {

QByteArray signatureBytes(const char *signature)
{
    return QByteArray::fromRawData(signature, ledger::signatureSize);
}

QVector<QByteArray> derOf(const QVector<PublicKey> &keys)
{
    QVector<QByteArray> ders;
    for (const PublicKey &key : keys)
        ders.append(key.toDER());
    return ders;
}

// Checks packages on many threads at once; each package has a place of its own for its digest. The
// counter orders what is here before the workers and what they write before the result: the pool
// does so too, but inside Qt, where a race detector doesn't see it.
class PackageVerifier
{
public:
    PackageVerifier(
        const LedgerTables &tables, const QVector<PublicKey> &keys,
        std::shared_ptr<const VerifiedSignatures::Set> known)
        : m_tables(tables)
        , m_keys(keys)
        , m_ders(derOf(keys))
        , m_known(std::move(known))
        , m_newlyGood(tables.packages.size())
        , m_places(m_newlyGood.data())
    {
        m_goodCount.store(0, std::memory_order_release);
    }

    void check(const PackageEntry &package)
    {
        m_goodCount.load(std::memory_order_acquire);
        const SignatureDigest digest = digestOf(package);
        const bool known = m_known->contains(digest);
        const bool good = known || verify(package);
        if (good && !known)
            m_places[&package - m_tables.packages.constData()] = digest;
        m_goodCount.fetch_add(good ? 1 : 0, std::memory_order_acq_rel);
    }

    // To be asked before newlyGood().
    bool allGood() const
    {
        return m_goodCount.load(std::memory_order_acquire) == m_tables.packages.size();
    }

    QVector<SignatureDigest> newlyGood() const
    {
        QVector<SignatureDigest> digests = m_newlyGood;
        digests.removeAll(SignatureDigest());
        return digests;
    }

private:
    SignatureDigest digestOf(const PackageEntry &package) const;
    bool verify(const PackageEntry &package) const;

    const LedgerTables &m_tables;
    const QVector<PublicKey> &m_keys;
    const QVector<QByteArray> m_ders;
    const std::shared_ptr<const VerifiedSignatures::Set> m_known;
    QVector<SignatureDigest> m_newlyGood;
    SignatureDigest *const m_places;
    std::atomic_int m_goodCount;
};

// Taken from the raw record: the same bytes there give the same signed form, and making that costs
// more than the digest. Each part is of a fixed length, carries its length or comes last, so no two
// different inputs look alike.
SignatureDigest PackageVerifier::digestOf(const PackageEntry &package) const
{
    const LedgerString type = m_tables.types.at(package.typeIndex);
    QCryptographicHash hash(QCryptographicHash::Sha3_256);
    hash.addData(m_ders.at(package.issuerIndex));
    hash.addData(package.signature, ledger::signatureSize);
    hash.addData(reinterpret_cast<const char *>(&type.length), sizeof type.length);
    hash.addData(type.data, type.length);
    hash.addData(package.content, package.contentSize);
    SignatureDigest digest;
    const QByteArray result = hash.result();
    std::copy(result.cbegin(), result.cend(), digest.bytes.begin());
    return digest;
}

bool PackageVerifier::verify(const PackageEntry &package) const
{
    const QByteArray content = signedContent(package, m_tables.types.at(package.typeIndex));
    return !content.isEmpty()
           && m_keys.at(package.issuerIndex).verify(signatureBytes(package.signature), content);
}

// The calling thread may be one of the pool's, and would keep its place there while it waits: with
// no other thread free, for ever.
class PoolPlaceGivenUp
{
public:
    PoolPlaceGivenUp() { QThreadPool::globalInstance()->releaseThread(); }
    ~PoolPlaceGivenUp() { QThreadPool::globalInstance()->reserveThread(); }

private:
    Q_DISABLE_COPY(PoolPlaceGivenUp)
};

} // namespace

IssuerVerification verifyIssuers(const QVector<LedgerIssuer> &issuers, const PublicKey &trustKey)
{
    IssuerVerification verification;
    for (const LedgerIssuer &issuer : issuers) {
        if (!trustKey.verify(signatureBytes(issuer.signature), issuer.publicKey.bytes())) {
            verification.fault = IssuerVerification::NotSigned;
            break;
        }
        ++verification.signedCount;
        const PublicKey key = PublicKey::fromDER(issuer.publicKey.bytes());
        if (!key.isValid()) {
            verification.fault = IssuerVerification::UnusableKey;
            break;
        }
        verification.keys.append(key);
    }
    return verification;
}

bool verifyPackages(
    const LedgerTables &tables, const QVector<PublicKey> &issuerKeys, VerifiedSignatures &known)
{
    PackageVerifier verifier(tables, issuerKeys, known.snapshot());
    {
        const PoolPlaceGivenUp givenUp;
        QtConcurrent::blockingMap(
            tables.packages.cbegin(), tables.packages.cend(),
            [&](const PackageEntry &package) { verifier.check(package); });
    }
    const bool allGood = verifier.allGood();
    known.remember(verifier.newlyGood());
    return allGood;
}

} // namespace nk::pm

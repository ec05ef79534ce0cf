// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerverification.h"

#include "closing/closingdown.h"
#include "sources/ledgerformat.h"
#include "sources/signedcontent.h"
#include "sources/verifiedsignatures.h"

#include <QCryptographicHash>
#include <QThread>
#include <QThreadPool>
#include <QtConcurrent>

#include <algorithm>
#include <atomic>
#include <vector>

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

// Some packages in a row, for one thread.
struct Batch
{
    const PackageEntry *first;
    const PackageEntry *last;
    QVector<SignatureDigest> newlyGood;
};

// Large enough that making contents and checking signatures, which drive each other out of the
// processor's caches, change seldom; small enough that all threads have some.
QVector<Batch> batchesOf(const QVector<PackageEntry> &packages)
{
    constexpr int largest = 128;
    const int fairShare = packages.size() / (4 * QThread::idealThreadCount());
    const int size = std::clamp(fairShare, 1, largest);
    QVector<Batch> batches;
    for (int first = 0; first < packages.size(); first += size) {
        const int last = std::min(first + size, packages.size());
        batches.append({packages.constData() + first, packages.constData() + last, {}});
    }
    return batches;
}

// Checks batches on many threads at once. The counter orders what is here before the workers and
// what they write before the result: the pool does so too, but inside Qt, where a race detector
// doesn't see it.
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
    {
        m_goodCount.store(0, std::memory_order_release);
    }

    void check(Batch &batch);

    // To be asked before the batches' results.
    bool allGood() const
    {
        return m_goodCount.load(std::memory_order_acquire) == m_tables.packages.size();
    }

private:
    struct Unknown
    {
        const PackageEntry *package;
        SignatureDigest digest;
        QByteArray content;
    };

    std::vector<Unknown> unknownOf(const Batch &batch) const;
    SignatureDigest digestOf(const PackageEntry &package, QCryptographicHash &hash) const;
    bool verify(const Unknown &unknown) const;

    const LedgerTables &m_tables;
    const QVector<PublicKey> &m_keys;
    const QVector<QByteArray> m_ders;
    const std::shared_ptr<const VerifiedSignatures::Set> m_known;
    std::atomic_int m_goodCount;
};

void PackageVerifier::check(Batch &batch)
{
    m_goodCount.load(std::memory_order_acquire);
    if (isClosingDown())
        return; // the ledger counts as refused, and nobody sees it any more
    const std::vector<Unknown> unknown = unknownOf(batch);
    for (const Unknown &each : unknown) {
        if (verify(each))
            batch.newlyGood.append(each.digest);
    }
    const int known = int(batch.last - batch.first) - int(unknown.size());
    m_goodCount.fetch_add(known + batch.newlyGood.size(), std::memory_order_acq_rel);
}

std::vector<PackageVerifier::Unknown> PackageVerifier::unknownOf(const Batch &batch) const
{
    std::vector<Unknown> unknown;
    QCryptographicHash hash(QCryptographicHash::Sha3_256);
    for (const PackageEntry *package = batch.first; package != batch.last; ++package) {
        const SignatureDigest digest = digestOf(*package, hash);
        if (!m_known->contains(digest)) {
            const LedgerString type = m_tables.types.at(package->typeIndex);
            unknown.push_back({package, digest, signedContent(*package, type)});
        }
    }
    return unknown;
}

// Taken from the raw record: the same bytes there give the same signed form, and making that costs
// more than the digest. Each part is of a fixed length, carries its length or comes last, so no two
// different inputs look alike.
SignatureDigest PackageVerifier::digestOf(
    const PackageEntry &package, QCryptographicHash &hash) const
{
    const LedgerString type = m_tables.types.at(package.typeIndex);
    hash.reset();
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

bool PackageVerifier::verify(const Unknown &unknown) const
{
    const PackageEntry &package = *unknown.package;
    return !unknown.content.isEmpty()
           && m_keys.at(package.issuerIndex)
                  .verify(signatureBytes(package.signature), unknown.content);
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
    QVector<Batch> batches = batchesOf(tables.packages);
    PackageVerifier verifier(tables, issuerKeys, known.snapshot());
    {
        const PoolPlaceGivenUp givenUp;
        QtConcurrent::blockingMap(batches, [&](Batch &batch) { verifier.check(batch); });
    }
    const bool allGood = verifier.allGood();
    QVector<SignatureDigest> newlyGood;
    for (const Batch &batch : std::as_const(batches))
        newlyGood += batch.newlyGood;
    known.remember(newlyGood);
    return allGood;
}

} // namespace nk::pm

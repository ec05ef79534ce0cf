// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledger/ledgersigner.h"

#include "catalogue/parallel.h"
#include "ledger/ledgerreading.h"
#include "sources/ledgerformat.h"
#include "sources/signedcontent.h"

#include <cstring>

namespace nk::pm::publisher {

namespace {

/// Finds the signature that a package had in an older ledger.
class OldSignatures
{
public:
    explicit OldSignatures(const QByteArray &ledger)
        : m_ledger(ledger)
        , m_reading(readLedger(ledger))
    {
        if (!m_reading.fault.isEmpty())
            return;
        const QVector<PackageEntry> &packages = m_reading.tables.packages;
        for (int i = 0; i < packages.size(); ++i)
            m_places.insert(packages.at(i).id.bytes(), i);
    }

    /// 64 bytes if the older ledger had \a package, of \a tables, from the same issuer and with the
    /// same content, else null.
    const char *find(const LedgerTables &tables, const PackageEntry &package) const
    {
        const int place = m_places.value(package.id.bytes(), -1);
        if (place < 0)
            return nullptr;
        const LedgerTables &oldTables = m_reading.tables;
        const PackageEntry &old = oldTables.packages.at(place);
        const bool same = content(old) == content(package)
                          && oldTables.types.at(old.typeIndex).bytes()
                                 == tables.types.at(package.typeIndex).bytes()
                          && oldTables.issuers.at(old.issuerIndex).publicKey.bytes()
                                 == tables.issuers.at(package.issuerIndex).publicKey.bytes();
        return same ? old.signature : nullptr;
    }

private:
    static QByteArray content(const PackageEntry &package)
    {
        return QByteArray::fromRawData(package.content, package.contentSize);
    }

    const QByteArray m_ledger; // which the tables refer to
    const LedgerReading m_reading;
    QHash<QByteArray, int> m_places; // of packages, by identifier
};

struct SignJob
{
    const PackageEntry *package;
    char *room; // 64 bytes in the ledger
    bool kept = false;
    bool failed = false;
};

class Signer
{
public:
    Signer(
        const LedgerTables &tables, const QVector<Issuer> &issuers,
        const OldSignatures &oldSignatures)
        : m_tables(tables)
        , m_issuers(issuers)
        , m_oldSignatures(oldSignatures)
    {}

    void run(SignJob &job) const
    {
        const PackageEntry &package = *job.package;
        QByteArray signature;
        if (const char *old = m_oldSignatures.find(m_tables, package)) {
            job.kept = true;
            signature = QByteArray::fromRawData(old, ledger::signatureSize);
        } else {
            signature = sign(package);
        }
        job.failed = signature.size() != ledger::signatureSize;
        if (!job.failed)
            std::memcpy(job.room, signature.constData(), ledger::signatureSize);
    }

private:
    QByteArray sign(const PackageEntry &package) const
    {
        const QByteArray content = signedContent(package, m_tables.types.at(package.typeIndex));
        return content.isEmpty() ? content : m_issuers.at(package.issuerIndex).key.sign(content);
    }

    const LedgerTables &m_tables;
    const QVector<Issuer> &m_issuers;
    const OldSignatures &m_oldSignatures;
};

} // namespace

SignedLedger signLedger(
    const QByteArray &ledger, const QVector<Issuer> &issuers, const QByteArray &previous,
    Progress &progress)
{
    SignedLedger result{ledger, 0, 0, {}};
    char *const bytes = result.bytes.data();
    const LedgerReading reading = readLedger(ledger);
    if (!reading.fault.isEmpty()) {
        result.faults.append(reading.fault);
        return result;
    }
    QVector<SignJob> jobs;
    for (const PackageEntry &package : reading.tables.packages)
        jobs.append({&package, bytes + (package.signature - ledger.constData())});

    progress.begin(QStringLiteral("Signing packages"), jobs.size());
    const OldSignatures oldSignatures(previous);
    const Signer signer(reading.tables, issuers, oldSignatures);
    forEachOnAllCores(jobs, [&](SignJob &job) {
        signer.run(job);
        progress.advance();
    });
    progress.end();

    for (const SignJob &job : qAsConst(jobs)) {
        if (job.failed)
            result.faults.append(
                QStringLiteral("the package \"%1\" can't be signed").arg(job.package->id.text()));
        ++(job.kept ? result.keptSignatures : result.newSignatures);
    }
    return result;
}

} // namespace nk::pm::publisher

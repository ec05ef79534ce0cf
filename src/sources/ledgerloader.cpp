// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerloader.h"

#include "closing/closingdown.h"
#include "sources/ledgerformat.h"
#include "sources/ledgerstructure.h"
#include "sources/ledgerverification.h"

#include <QElapsedTimer>
#include <QScopeGuard>

namespace nk::pm {

Q_LOGGING_CATEGORY(ledgerLog, "norvak.packageserver.ledger", QtInfoMsg)

namespace {

using nk::crypto::ed25519::PublicKey;

void logStructureFault(const LedgerStructure &structure)
{
    using Fault = LedgerStructure::Fault;
    const QByteArray &identifier = structure.identifier;
    switch (structure.fault) {
    case Fault::NoFault:
        qCDebug(ledgerLog) << "Offset table parsing OK";
        break;
    case Fault::TooSmall:
        qCCritical(ledgerLog) << "Invalid or corrupted ledger data:"
                              << "Size of" << structure.number << "is below minimum size";
        break;
    case Fault::MissingMagic:
        qCCritical(ledgerLog) << "Ledger data missing magic bytes \"ldgr\"";
        break;
    case Fault::WrongVersion:
        qCCritical(ledgerLog) << "Ledger version mismatch, must be 1.0";
        break;
    case Fault::UnknownIdentifier:
        qCCritical(ledgerLog) << "Invalid offset table entry" << identifier;
        break;
    case Fault::OffsetOutOfRange:
        qCCritical(ledgerLog) << "Invalid offset" << structure.number << "for offset able entry"
                              << identifier;
        break;
    case Fault::NoSegmentAtOffset:
        qCCritical(ledgerLog) << "Invalid offset" << structure.number << "for offset able entry"
                              << identifier << "(No such section at that offset)";
        break;
    case Fault::SegmentTooLong:
        qCCritical(ledgerLog) << "Segment" << identifier << "has out of bounds section size"
                              << structure.number;
        break;
    case Fault::MissingSegments:
        qCCritical(ledgerLog) << "Incomplete ledger data, missing segments:" << structure.missing;
        break;
    case Fault::MisalignedSegments:
        qCCritical(ledgerLog) << "Invalid ledger structure, misaligned segments";
        break;
    }
}

void logCount(quint32 count, const char *what)
{
    qCDebug(ledgerLog) << "Ledger contains" << count << what;
}

class LedgerLoader
{
public:
    LedgerLoader(const QByteArray &ledger, LedgerTables &tables)
        : m_ledger(ledger)
        , m_tables(tables)
    {}

    bool load(const PublicKey &trustKey, VerifiedSignatures &known)
    {
        return !m_ledger.isEmpty() && readStructure() && loadIssuers() && loadKeywords()
               && loadPackages() && loadLinks() && verify(trustKey, known);
    }

private:
    bool readStructure();
    bool loadIssuers();
    bool loadKeywords();
    bool loadPackages();
    bool loadLinks();
    bool verify(const PublicKey &trustKey, VerifiedSignatures &known);
    QByteArray segment(const char *identifier) const { return m_segments.value(identifier); }

    const QByteArray &m_ledger;
    LedgerTables &m_tables;
    QHash<QByteArray, QByteArray> m_segments;
};

bool LedgerLoader::readStructure()
{
    const LedgerStructure structure = readLedgerStructure(m_ledger);
    if (structure.headerGood)
        qCDebug(ledgerLog) << "Basic header verification OK";
    logStructureFault(structure);
    m_segments = structure.segments;
    return structure.fault == LedgerStructure::NoFault;
}

bool LedgerLoader::loadIssuers()
{
    const SegmentReading reading = readIssuers(segment(ledger::issuerSegment), m_tables);
    logCount(reading.headCount, "issuers");
    return reading.good;
}

bool LedgerLoader::loadKeywords()
{
    const SegmentReading reading = readKeywords(segment(ledger::keywordSegment), m_tables);
    logCount(reading.headCount, "languages");
    if (reading.recordCount)
        logCount(*reading.recordCount, "keywords");
    return reading.good;
}

bool LedgerLoader::loadPackages()
{
    const SegmentReading reading = readPackages(segment(ledger::packageSegment), m_tables);
    logCount(reading.headCount, "types");
    if (reading.recordCount)
        logCount(*reading.recordCount, "packages");
    if (reading.failedRecord >= 0)
        qCCritical(ledgerLog) << "Package parsing failed";
    return reading.good;
}

bool LedgerLoader::loadLinks()
{
    const SegmentReading reading = readLinks(segment(ledger::linkSegment), m_tables);
    if (reading.recordCount)
        logCount(*reading.recordCount, "links");
    if (reading.failedRecord >= 0)
        qCCritical(ledgerLog) << "Failed to parse link with index" << reading.failedRecord;
    return reading.good;
}

bool LedgerLoader::verify(const PublicKey &trustKey, VerifiedSignatures &known)
{
    const IssuerVerification issuers = verifyIssuers(m_tables.issuers, trustKey);
    for (int i = 0; i < issuers.signedCount; ++i) {
        const LedgerIssuer &issuer = m_tables.issuers.at(i);
        qCDebug(ledgerLog) << "Issuer signature of" << issuer.firstLabel.text()
                           << issuer.secondLabel.text() << "is valid";
    }
    if (issuers.fault == IssuerVerification::NoFault)
        return verifyPackages(m_tables, issuers.keys, known);
    const LedgerIssuer &refused = m_tables.issuers.at(issuers.keys.size());
    if (issuers.fault == IssuerVerification::NotSigned)
        qCCritical(ledgerLog) << "Failed to verify issuer signature of" << refused.firstLabel.text()
                              << refused.secondLabel.text();
    else
        qCCritical(ledgerLog) << "Public key of" << refused.firstLabel.text()
                              << refused.secondLabel.text() << "is not valid";
    return false;
}

} // namespace

LedgerTables loadLedger(
    const QByteArray &ledger, const PublicKey &trustKey, VerifiedSignatures &known)
{
    QElapsedTimer timer;
    timer.start();
    const auto logTime = qScopeGuard([&timer] {
        qCDebug(ledgerLog) << "Ledger parsing took" << double(timer.nsecsElapsed()) / 1e6
                           << "msecs";
    });
    LedgerTables tables;
    tables.verified = LedgerLoader(ledger, tables).load(trustKey, known);
    if (!tables.verified) {
        // What the end of the application cut short is no fault of the ledger.
        if (!isClosingDown())
            qCCritical(ledgerLog) << "Parsing of package ledger failed";
        tables.keywords = {};
        tables.packages = {};
        tables.links = {};
    }
    return tables;
}

} // namespace nk::pm

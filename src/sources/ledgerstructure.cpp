// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgerstructure.h"

#include "sources/ledgerformat.h"

#include <QVector>
#include <QtEndian>

#include <algorithm>

namespace nk::pm {

namespace {

using Fault = LedgerStructure::Fault;

// One entry of the offset table with what its segment claims.
struct SegmentClaim
{
    QByteArray identifier;
    quint32 offset = 0;
    quint32 payloadSize = 0;

    // Past 32 bits rather than wrapped, so that an overlap never passes for a neighbour.
    qint64 end() const { return qint64(offset) + ledger::segmentFramingSize + payloadSize; }
};

quint32 numberAt(const QByteArray &ledger, quint32 offset)
{
    return qFromLittleEndian<quint32>(ledger.constData() + offset);
}

QByteArray identifierAt(const QByteArray &ledger, quint32 offset)
{
    return QByteArray(ledger.constData() + offset, ledger::identifierSize);
}

QSet<QByteArray> knownIdentifiers()
{
    return {ledger::segmentIdentifiers.begin(), ledger::segmentIdentifiers.end()};
}

class StructureReader
{
public:
    explicit StructureReader(const QByteArray &ledger)
        : m_ledger(ledger)
    {}

    LedgerStructure read()
    {
        if (readHeader() && readOffsetTable() && checkComplete() && checkContiguous())
            takeSegments();
        return m_structure;
    }

private:
    bool readHeader();
    bool readOffsetTable();
    bool readEntry(quint32 at);
    bool checkComplete();
    bool checkContiguous();
    void takeSegments();
    bool fail(Fault fault, const QByteArray &identifier = {}, quint32 number = 0);

    const QByteArray &m_ledger;
    QVector<SegmentClaim> m_claims;
    LedgerStructure m_structure;
};

bool StructureReader::fail(Fault fault, const QByteArray &identifier, quint32 number)
{
    m_structure.fault = fault;
    m_structure.identifier = identifier;
    m_structure.number = number;
    return false;
}

bool StructureReader::readHeader()
{
    if (m_ledger.size() < ledger::minimumSize)
        return fail(Fault::TooSmall, {}, quint32(m_ledger.size()));
    if (!m_ledger.startsWith(ledger::magic))
        return fail(Fault::MissingMagic);
    if (quint8(m_ledger.at(ledger::magicSize)) != ledger::majorVersion
        || quint8(m_ledger.at(ledger::magicSize + 1)) != ledger::minorVersion)
        return fail(Fault::WrongVersion);
    m_structure.headerGood = true;
    return true;
}

bool StructureReader::readOffsetTable()
{
    for (int entry = 0; entry < ledger::segmentCount; ++entry) {
        if (!readEntry(ledger::offsetTableStart + quint32(entry) * ledger::offsetTableEntrySize))
            return false;
    }
    return true;
}

bool StructureReader::readEntry(quint32 at)
{
    SegmentClaim claim;
    claim.identifier = identifierAt(m_ledger, at);
    if (!knownIdentifiers().contains(claim.identifier))
        return fail(Fault::UnknownIdentifier, claim.identifier);
    claim.offset = numberAt(m_ledger, at + ledger::identifierSize);
    const auto size = quint32(m_ledger.size());
    if (claim.offset < ledger::headerSize || claim.offset > size - ledger::segmentFramingSize)
        return fail(Fault::OffsetOutOfRange, claim.identifier, claim.offset);
    if (identifierAt(m_ledger, claim.offset) != claim.identifier)
        return fail(Fault::NoSegmentAtOffset, claim.identifier, claim.offset);
    claim.payloadSize = numberAt(m_ledger, claim.offset + ledger::identifierSize);
    // In 32 bits and without the framing: the last segment may claim up to 7 bytes more than there
    // are, and a sum that wraps passes. takeSegments() cuts either at the ledger's end.
    if (claim.offset + claim.payloadSize >= size)
        return fail(Fault::SegmentTooLong, claim.identifier, claim.payloadSize);
    m_claims.append(claim);
    return true;
}

bool StructureReader::checkComplete()
{
    m_structure.missing = knownIdentifiers();
    for (const SegmentClaim &claim : std::as_const(m_claims))
        m_structure.missing.remove(claim.identifier);
    return m_structure.missing.isEmpty() || fail(Fault::MissingSegments);
}

bool StructureReader::checkContiguous()
{
    std::sort(m_claims.begin(), m_claims.end(), [](const auto &a, const auto &b) {
        return a.offset < b.offset;
    });
    const auto apart = [](const auto &a, const auto &b) { return a.end() != b.offset; };
    const bool contiguous =
        std::adjacent_find(m_claims.cbegin(), m_claims.cend(), apart) == m_claims.cend();
    return contiguous || fail(Fault::MisalignedSegments);
}

void StructureReader::takeSegments()
{
    for (const SegmentClaim &claim : std::as_const(m_claims)) {
        const qint64 end = std::min<qint64>(claim.end(), m_ledger.size());
        m_structure.segments.insert(
            claim.identifier,
            QByteArray::fromRawData(m_ledger.constData() + claim.offset, int(end - claim.offset)));
    }
}

} // namespace

LedgerStructure readLedgerStructure(const QByteArray &ledger)
{
    return StructureReader(ledger).read();
}

} // namespace nk::pm

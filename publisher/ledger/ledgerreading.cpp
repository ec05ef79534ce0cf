// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "ledger/ledgerreading.h"

#include "sources/ledgerformat.h"

#include <QStringList>

namespace nk::pm::publisher {

namespace {

QString inWords(const LedgerStructure &structure)
{
    const QString identifier = QString::fromLatin1(structure.identifier);
    const QString segment = QStringLiteral("segment \"%1\": ").arg(identifier);
    switch (structure.fault) {
    case LedgerStructure::NoFault:
        return {};
    case LedgerStructure::TooSmall:
        return QStringLiteral("has %1 bytes, a ledger has at least %2")
            .arg(structure.number)
            .arg(ledger::minimumSize);
    case LedgerStructure::MissingMagic:
        return QStringLiteral("doesn't begin with \"ldgr\"");
    case LedgerStructure::WrongVersion:
        return QStringLiteral("isn't of version 1.0");
    case LedgerStructure::UnknownIdentifier:
        return QStringLiteral("the offset table names a segment \"%1\"").arg(identifier);
    case LedgerStructure::OffsetOutOfRange:
        return segment + QStringLiteral("the offset %1 is out of range").arg(structure.number);
    case LedgerStructure::NoSegmentAtOffset:
        return segment + QStringLiteral("there is none at offset %1").arg(structure.number);
    case LedgerStructure::SegmentTooLong:
        return segment + QStringLiteral("its size %1 passes the end").arg(structure.number);
    case LedgerStructure::MissingSegments: {
        QStringList names;
        for (const QByteArray &name : structure.missing)
            names.append(QString::fromLatin1(name));
        names.sort();
        return QStringLiteral("has no segment ") + names.join(QStringLiteral(", "));
    }
    case LedgerStructure::MisalignedSegments:
        return QStringLiteral("the segments don't lie end to end");
    }
    return {};
}

QString inWords(const char *identifier, const SegmentReading &reading)
{
    if (reading.good)
        return {};
    const QString segment = QStringLiteral("segment \"%1\": ").arg(QLatin1String(identifier));
    return reading.failedRecord < 0
               ? segment + QStringLiteral("can't be read up to its records")
               : segment + QStringLiteral("record %1 can't be read").arg(reading.failedRecord);
}

LedgerString end(const LedgerTables &tables, bool isPackage, qint32 index)
{
    const int count = isPackage ? tables.packages.size() : tables.keywords.size();
    if (index < 0 || index >= count)
        return {};
    return isPackage ? tables.packages.at(index).id : tables.keywords.at(index).id;
}

} // namespace

LedgerReading readLedger(const QByteArray &ledger)
{
    LedgerReading reading;
    reading.structure = readLedgerStructure(ledger);
    reading.fault = inWords(reading.structure);

    using Read = SegmentReading (*)(const QByteArray &, LedgerTables &);
    constexpr std::array<Read, ledger::segmentCount> reads{
        readIssuers, readKeywords, readPackages, readLinks};
    for (size_t i = 0; i < reads.size() && reading.fault.isEmpty(); ++i) {
        const char *identifier = ledger::segmentIdentifiers.at(i);
        const QByteArray segment = reading.structure.segments.value(identifier);
        reading.fault = inWords(identifier, reads.at(i)(segment, reading.tables));
    }
    return reading;
}

LedgerString linkStart(const LedgerTables &tables, const LedgerLink &link)
{
    return end(tables, link.isFromPackage(), link.from);
}

LedgerString linkEnd(const LedgerTables &tables, const LedgerLink &link)
{
    return end(tables, link.isToPackage(), link.to);
}

} // namespace nk::pm::publisher

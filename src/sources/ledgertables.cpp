// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/ledgertables.h"

#include "sources/ledgerformat.h"

namespace nk::pm {

namespace {

std::optional<LedgerIssuer> readIssuer(LedgerCursor &cursor)
{
    LedgerIssuer issuer;
    cursor.clearOk();
    issuer.signature = cursor.bytes(ledger::signatureSize);
    issuer.firstLabel = cursor.string();
    issuer.secondLabel = cursor.string();
    issuer.publicKey = cursor.string();
    if (!cursor.ok() || !issuer.signature)
        return std::nullopt;
    return issuer;
}

bool readGroup(LedgerCursor &cursor, int languageCount, LedgerKeyword &keyword)
{
    const quint16 language = cursor.u16();
    const quint8 count = cursor.u8();
    if (language >= languageCount)
        return false;
    QVector<LedgerString> strings;
    for (int i = 0; i < count; ++i)
        strings.append(cursor.string());
    keyword.strings.insert(language, strings);
    return cursor.ok();
}

std::optional<LedgerKeyword> readKeyword(LedgerCursor &cursor, int languageCount)
{
    LedgerKeyword keyword;
    cursor.clearOk();
    keyword.type = cursor.u8();
    keyword.id = cursor.string();
    const quint16 groupCount = cursor.u16();
    for (int i = 0; i < groupCount; ++i) {
        if (!readGroup(cursor, languageCount, keyword))
            return std::nullopt;
    }
    if (!cursor.ok())
        return std::nullopt;
    return keyword;
}

std::optional<PackageEntry> readPackage(LedgerCursor &cursor, const LedgerTables &tables)
{
    PackageEntry package;
    cursor.clearOk();
    package.typeIndex = cursor.u16();
    package.issuerIndex = cursor.u16();
    package.signature = cursor.bytes(ledger::signatureSize);
    package.id = cursor.string();
    package.content = cursor.position();
    package.manifest = cursor.string();
    const quint16 fileCount = cursor.u16();
    if (!cursor.ok() || !package.signature || package.typeIndex >= tables.types.size()
        || package.issuerIndex >= tables.issuers.size())
        return std::nullopt;
    const std::optional<LedgerFiles> files = LedgerFiles::read(cursor, fileCount);
    if (!files)
        return std::nullopt;
    package.files = *files;
    package.contentSize = int(cursor.position() - package.content);
    return package;
}

std::optional<LedgerLink> readLink(LedgerCursor &cursor)
{
    LedgerLink link;
    cursor.clearOk();
    link.type = cursor.u8();
    link.endKinds = cursor.u8();
    link.from = qint32(cursor.u32());
    link.to = qint32(cursor.u32());
    if (!cursor.ok())
        return std::nullopt;
    return link;
}

void readStrings(LedgerCursor &cursor, int count, QVector<LedgerString> &strings)
{
    for (int i = 0; i < count; ++i)
        strings.append(cursor.string());
}

// Appends `count` records; readRecord gives one, or none and so the end. Returns the number of
// records that are there.
template<typename Record, typename ReadRecord>
quint32 readRecords(quint32 count, QVector<Record> &records, const ReadRecord &readRecord)
{
    for (quint32 i = 0; i < count; ++i) {
        std::optional<Record> record = readRecord();
        if (!record)
            return i;
        records.append(std::move(*record));
    }
    return count;
}

// The second half of a segment: a count that must be there, and that many records.
template<typename Record, typename ReadRecord>
void readCountedRecords(
    LedgerCursor &cursor, SegmentReading &reading, QVector<Record> &records,
    const ReadRecord &readRecord)
{
    const quint32 count = cursor.u32();
    if (!cursor.ok())
        return;
    reading.recordCount = count;
    const quint32 there = readRecords(count, records, readRecord);
    reading.good = there == count;
    if (!reading.good)
        reading.failedRecord = int(there);
}

} // namespace

bool LedgerLink::isFromPackage() const
{
    return endKinds & ledger::fromPackageMask;
}

bool LedgerLink::isToPackage() const
{
    return endKinds & ledger::toPackageMask;
}

SegmentReading readIssuers(const QByteArray &segment, LedgerTables &tables)
{
    LedgerCursor cursor(segment);
    SegmentReading reading;
    reading.headCount = cursor.u16();
    reading.good = cursor.ok() && readRecords(reading.headCount, tables.issuers, [&] {
                                      return readIssuer(cursor);
                                  }) == reading.headCount;
    return reading;
}

SegmentReading readKeywords(const QByteArray &segment, LedgerTables &tables)
{
    LedgerCursor cursor(segment);
    SegmentReading reading;
    reading.headCount = cursor.u16();
    readStrings(cursor, reading.headCount, tables.languages);
    if (cursor.ok())
        readCountedRecords(cursor, reading, tables.keywords, [&] {
            return readKeyword(cursor, tables.languages.size());
        });
    return reading;
}

SegmentReading readPackages(const QByteArray &segment, LedgerTables &tables)
{
    LedgerCursor cursor(segment);
    SegmentReading reading;
    reading.headCount = cursor.u16();
    readStrings(cursor, reading.headCount, tables.types);
    readCountedRecords(
        cursor, reading, tables.packages, [&] { return readPackage(cursor, tables); });
    return reading;
}

SegmentReading readLinks(const QByteArray &segment, LedgerTables &tables)
{
    LedgerCursor cursor(segment);
    SegmentReading reading;
    readCountedRecords(cursor, reading, tables.links, [&] { return readLink(cursor); });
    return reading;
}

} // namespace nk::pm

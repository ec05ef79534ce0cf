// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <array>

/// The constants of the ledger file, shared by its reader (sources/) and its writer (publisher/).
///
/// Every integer of the file is unsigned and little-endian, nothing is aligned. A String or Blob is
/// a u16 length and that many bytes. The file is a header and four segments, which the header's
/// offset table names in any order and which form one contiguous run in any order.
namespace nk::pm::ledger {

constexpr int magicSize = 4;
constexpr char magic[magicSize + 1] = "ldgr";
constexpr quint8 majorVersion = 1;
constexpr quint8 minorVersion = 0;

/// A segment is named by four ASCII bytes, in the offset table and again at its own start.
constexpr int identifierSize = 4;
constexpr char issuerSegment[identifierSize + 1] = ".iss";
constexpr char keywordSegment[identifierSize + 1] = ".kwd";
constexpr char packageSegment[identifierSize + 1] = ".pkg";
constexpr char linkSegment[identifierSize + 1] = ".lnk";
constexpr int segmentCount = 4;
constexpr std::array<const char *, segmentCount> segmentIdentifiers{
    issuerSegment, keywordSegment, packageSegment, linkSegment};

/// Magic, two version bytes and the offset table: four times identifier and u32 offset.
constexpr int offsetTableEntrySize = identifierSize + 4;
constexpr int offsetTableStart = magicSize + 2;
constexpr int headerSize = offsetTableStart + segmentCount * offsetTableEntrySize;
/// Identifier and u32 payload size, in front of each segment's payload.
constexpr int segmentFramingSize = identifierSize + 4;
/// What the counts in four empty segments take: u16; u16, u32; u16, u32; u32.
constexpr int emptyPayloadsSize = 2 + 6 + 6 + 4;
/// The empty ledger.
constexpr int minimumSize = headerSize + segmentCount * segmentFramingSize + emptyPayloadsSize;

/// Raw Ed25519 signature.
constexpr int signatureSize = 64;
/// Raw SHA-224 digest of a file's content; in lower-case hexadecimal the file's key in the store
/// and in download addresses.
constexpr int hashSize = 28;
/// The most bytes that a String or Blob holds.
constexpr int maximumStringSize = 0xffff;

/// Between the singular and the plural form in a keyword's display string.
constexpr char formSeparator = '\0';

/// Which kind of node a link's ends are: an end is a keyword index if its bits of the record's
/// second byte are all clear, and else a package index.
constexpr quint8 fromPackageMask = 0x0f;
constexpr quint8 toPackageMask = 0xf0;
/// What a writer sets for an end that is a package.
constexpr quint8 fromPackage = 0x01;
constexpr quint8 toPackage = 0x10;
constexpr int linkRecordSize = 10;

/// A package's revision is the base64 text of this many first bytes of its signature.
constexpr int revisionSignatureSize = 24;

static_assert(headerSize == 38 && minimumSize == 88);

} // namespace nk::pm::ledger

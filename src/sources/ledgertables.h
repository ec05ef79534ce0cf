// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sources/ledgerfiles.h"

#include <norvakpackagemanager_export.h>

#include <QMap>
#include <QVector>

#include <optional>

namespace nk::pm {

/// Who may sign packages.
struct LedgerIssuer
{
    const char *signature = nullptr; ///< 64 bytes, by the trust key, over publicKey
    LedgerString firstLabel;
    LedgerString secondLabel;
    LedgerString publicKey; ///< DER
};

struct LedgerKeyword
{
    int type = 0;
    LedgerString id;
    QMap<int, QVector<LedgerString>> strings; ///< by language index
};

struct PackageEntry
{
    const char *signature = nullptr; ///< 64 bytes, by the issuer
    quint16 typeIndex = 0;
    quint16 issuerIndex = 0;
    LedgerString id;
    LedgerString manifest;
    LedgerFiles files;
    /// The record's bytes from the manifest's length to its end: with the type, all that its signed
    /// form is made from.
    const char *content = nullptr;
    int contentSize = 0;
};

struct NK_PM_EXPORT LedgerLink
{
    int type = 0;
    qint32 from = 0;
    qint32 to = 0;
    quint8 endKinds = 0;

    bool isFromPackage() const;
    bool isToPackage() const;
};

/// The records of a ledger in their order, as views: valid as long as the ledger's bytes.
struct LedgerTables
{
    QVector<LedgerString> languages;
    QVector<LedgerString> types;
    QVector<LedgerIssuer> issuers;
    QVector<LedgerKeyword> keywords;
    QVector<PackageEntry> packages;
    QVector<LedgerLink> links;
    bool verified = false; ///< all was read, and whoever signed it may do so
};

/// How the reading of one segment went.
struct SegmentReading
{
    bool good = false;
    /// The count at the segment's head, of languages or types, read or not; of issuers too.
    quint16 headCount = 0;
    /// Keywords, packages or links, if the count could be read.
    std::optional<quint32> recordCount;
    /// The record of the second count at which the reading ended, -1 if it was not a record.
    int failedRecord = -1;
};

/// Each reads one segment into its tables, up to the first record that can't be read. A record that
/// lacks its signature or a file's hash can't be read. No count of the file sizes a table: records
/// are appended as they come.
NK_PM_EXPORT SegmentReading readIssuers(const QByteArray &segment, LedgerTables &tables);
NK_PM_EXPORT SegmentReading readKeywords(const QByteArray &segment, LedgerTables &tables);
NK_PM_EXPORT SegmentReading readPackages(const QByteArray &segment, LedgerTables &tables);
NK_PM_EXPORT SegmentReading readLinks(const QByteArray &segment, LedgerTables &tables);

} // namespace nk::pm

Q_DECLARE_TYPEINFO(nk::pm::LedgerIssuer, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(nk::pm::LedgerKeyword, Q_MOVABLE_TYPE);
Q_DECLARE_TYPEINFO(nk::pm::PackageEntry, Q_PRIMITIVE_TYPE);
Q_DECLARE_TYPEINFO(nk::pm::LedgerLink, Q_PRIMITIVE_TYPE);

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "ledger/ledgerreading.h"

#include <QJsonObject>

namespace nk::pm::publisher {

/// A type's name as catalogues write it, or its number if it has none.
QString keywordTypeName(int type);
QString linkTypeName(int type);

/// The mark by which clients tell one copy of a package from another.
QString revisionOf(const PackageEntry &package);

/// "0 Studio, studio@example.org": an issuer's place and labels.
QString issuerName(const LedgerTables &tables, int index);

/// One record of a ledger, for other programs.
QJsonObject describeIssuer(const LedgerTables &tables, int index);
QJsonObject describeKeyword(const LedgerTables &tables, const LedgerKeyword &keyword);
QJsonObject describePackage(const LedgerTables &tables, const PackageEntry &package);
QJsonObject describeLink(const LedgerTables &tables, const LedgerLink &link);

/// Offset and size of each segment, in the order in which they lie.
QJsonArray describeSegments(const QByteArray &ledger, const LedgerStructure &structure);

} // namespace nk::pm::publisher

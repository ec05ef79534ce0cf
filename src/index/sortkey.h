// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QStringRef>
#include <QVector>

namespace nk::pm {

class PackageIndexNode;

/// Most terms in the keyword chain of one sort key.
constexpr int maxSortChainTerms = 4096;

/// The canonical texts of what a package is, most general first. A keyword that is reached in
/// several ways stands there as often, one that leads back to itself isn't followed round.
struct KeywordChain
{
    QVector<QStringRef> terms;
    bool isCut = false; ///< more than maxSortChainTerms; the most general are left out
};
KeywordChain keywordChainOf(const PackageIndexNode &package);

/// The text by which packages of one type are ordered: A>B:C&D#id for a package that is a B, which
/// is an A, and that contains C and D.
QString sortKeyOf(const PackageIndexNode &package, const KeywordChain &chain);

} // namespace nk::pm

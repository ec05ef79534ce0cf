// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QSet>
#include <QString>
#include <QStringRef>
#include <QVector>

namespace nk::pm {

class KeywordNode;
class PackageIndexNode;

// The walks over a finished graph, as functions of its nodes. None of them recurses, all of them
// end on cyclic data, and the time of the first two is bounded by the number of nodes and links
// that can be reached, however many paths lead there.

/// Most terms in the keyword chain of one sort key.
constexpr int maxSortChainTerms = 4096;

/// The keywords that hold for \a package: those that its links reach, as far as each link type
/// passes on, without the ones that it is not.
QSet<KeywordNode *> keywordsOf(const PackageIndexNode &package);

/// Whether a package of \a type reaches \a keyword along a chain of links that passes the chain
/// test (see LinkChain).
bool isReachedByType(const PackageIndexNode &keyword, const QStringRef &type);

/// The canonical texts of what a package is, most general first. A keyword that is reached in
/// several ways stands there as often.
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

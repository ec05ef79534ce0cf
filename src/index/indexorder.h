// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QMap>
#include <QPair>
#include <QStringRef>
#include <QVector>

namespace nk::pm {

class KeywordNode;
class PackageNode;

/// Levels of one package type that get a range of their own; deeper ones share the whole type's.
constexpr int maxTypeLevels = 256;

/// Sorts by display string, case ignored; texts that are equal so by identifier.
void sortKeywords(QVector<KeywordNode *> &keywords);

/// Sorts by type, by UTF-16 code units, and packages of one type by sort key, case ignored.
/// Computes the sort keys that aren't there yet.
void sortPackages(QVector<PackageNode *> &packages);

/// First and last position of each type, and of each prefix of a type that ends before a ":", in
/// the sorted \a packages. A range may hold packages of a sibling type whose name goes on with a
/// character below ":".
QMap<QStringRef, QPair<int, int>> typeRangesOf(const QVector<PackageNode *> &packages);

} // namespace nk::pm

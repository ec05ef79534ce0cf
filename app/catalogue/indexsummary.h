// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QMap>
#include <QSharedPointer>
#include <QStringList>
#include <QVector>

namespace nk::pm {
class PackageAccessor;
class PackageIndex;
} // namespace nk::pm

namespace nk::pm::app {

/// How much of everything an index holds.
struct IndexSummary
{
    QSharedPointer<PackageIndex> index; ///< null before the first
    int packages = 0;
    int keywords = 0;
    /// Packages of each type and its sub-types, by the levels of the type: a type stands before its
    /// sub-types, and those before its next neighbour.
    QMap<QStringList, int> packagesByType;
    /// Packages that come from each snapshot, those that another source overrides left out.
    QHash<const PackageAccessor *, int> packagesBySnapshot;
    QVector<const PackageAccessor *> refused; ///< snapshots that are
};

/// Counts; takes some milliseconds per ten thousand packages, so is a worker's business.
IndexSummary summarize(const QSharedPointer<PackageIndex> &index);

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QVector>

#include <optional>
#include <variant>
#include <vector>

namespace nk::pm {

class PackageNode;

/// Takes the rows from \a first up to and including \a last away.
struct RemoveRows
{
    int first;
    int last;
};

/// Puts \a rows in, so that the first of them stands at \a first.
struct InsertRows
{
    int first;
    QVector<PackageNode *> rows;
};

/// Takes the row at \a from out and puts it in again so that it stands at \a to.
struct MoveRow
{
    int from;
    int to;
};

/// One change of a list, in terms of the positions that hold at its turn.
using RowChange = std::variant<RemoveRows, InsertRows, MoveRow>;

/// The changes that turn \a shown into \a wanted, to be applied in order: contiguous removals from
/// the end to the start, contiguous insertions from the start to the end, then single moves, each
/// of the row furthest from its place, the topmost of several. Neither list holds a node twice.
///
/// A row never moves to the top of the list. When the next move would be such a one there is no way
/// on, and nothing is returned. Time O(n + m * sqrt(n)) for n rows and m moves. Any thread.
std::optional<std::vector<RowChange>> rowChanges(
    const QVector<PackageNode *> &shown, const QVector<PackageNode *> &wanted);

} // namespace nk::pm

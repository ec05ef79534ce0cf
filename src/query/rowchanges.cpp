// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/rowchanges.h"

#include "query/rowmoves.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <iterator>

namespace nk::pm {

namespace {

using Rows = QVector<PackageNode *>;
using Positions = QHash<PackageNode *, int>;
using Changes = std::vector<RowChange>;

/// No list is known that takes more than a few moves per row, but it isn't proven that none does;
/// past this number a worker would have been at it for seconds.
constexpr int movesPerRow = 64;

Positions positionsOf(const Rows &rows)
{
    Positions positions;
    positions.reserve(rows.size());
    for (int i = 0; i < rows.size(); ++i)
        positions.insert(rows.at(i), i);
    return positions;
}

/// Appends the removals, and gives the rows that stay.
Rows removeRows(const Rows &shown, const Positions &targets, Changes &changes)
{
    for (int last = shown.size() - 1; last >= 0; --last) {
        if (targets.contains(shown.at(last)))
            continue;
        int first = last;
        while (first > 0 && !targets.contains(shown.at(first - 1)))
            --first;
        changes.push_back(RemoveRows{first, last});
        last = first;
    }
    Rows rows;
    rows.reserve(shown.size());
    std::copy_if(shown.begin(), shown.end(), std::back_inserter(rows), [&](PackageNode *node) {
        return targets.contains(node);
    });
    return rows;
}

/// Appends the insertions, and gives all wanted rows: new ones at their places, \a kept ones in
/// their old order around them.
Rows insertRows(const Rows &kept, const Rows &wanted, Changes &changes)
{
    const QSet<PackageNode *> old(kept.begin(), kept.end());
    Rows rows = wanted;
    auto next = kept.begin();
    for (int first = 0; first < wanted.size(); ++first) {
        if (old.contains(wanted.at(first))) {
            rows[first] = *next++;
            continue;
        }
        int end = first + 1;
        while (end < wanted.size() && !old.contains(wanted.at(end)))
            ++end;
        changes.push_back(InsertRows{first, wanted.mid(first, end - first)});
        first = end - 1;
    }
    return rows;
}

/// Appends the moves that put \a rows in order; false if there is no way on.
bool moveRows(const Rows &rows, const Positions &targets, Changes &changes)
{
    std::vector<int> order;
    order.reserve(static_cast<std::size_t>(rows.size()));
    for (PackageNode *node : rows)
        order.push_back(targets.value(node));
    RowMoves moves(order);
    for (qint64 left = qint64(movesPerRow) * rows.size(); left >= 0; --left) {
        const RowMoves::Candidate next = moves.furthest();
        if (next.from == next.to)
            return true;
        if (next.to <= 0)
            return false;
        changes.push_back(MoveRow{next.from, next.to});
        moves.move(next.from, next.to);
    }
    return false;
}

} // namespace

std::optional<std::vector<RowChange>> rowChanges(const Rows &shown, const Rows &wanted)
{
    Changes changes;
    const Positions targets = positionsOf(wanted);
    if (targets.size() != wanted.size())
        return std::nullopt; // a node twice: positions can't tell such rows apart
    const Rows kept = removeRows(shown, targets, changes);
    const Rows rows = insertRows(kept, wanted, changes);
    if (!moveRows(rows, targets, changes))
        return std::nullopt;
    return changes;
}

} // namespace nk::pm

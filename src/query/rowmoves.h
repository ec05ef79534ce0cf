// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <vector>

namespace nk::pm {

/// A permutation that is being put in order: each row knows its target position.
///
/// The rows stand in blocks of about sqrt(n), each of which knows its rows with the largest
/// displacement (target less position) in either direction, relative to the block's own start. A
/// move shifts all rows between its ends by one; for whole blocks that is a change of their start
/// alone. So finding and making one move costs O(sqrt(n)) instead of O(n).
class RowMoves
{
public:
    /// A row at position \a from that belongs to position \a to.
    struct Candidate
    {
        int from;
        int to;
    };

    /// \a targets, in the present order of the rows, is a permutation of 0 to n - 1.
    explicit RowMoves(const std::vector<int> &targets);

    /// The row furthest from its target, the topmost of several. Its ends are equal if all rows are
    /// in place.
    Candidate furthest() const;
    /// Takes the row at \a from out and puts it in again at \a to, which shifts those in between.
    void move(int from, int to);

private:
    struct Extreme
    {
        int offset = 0;       // in the block
        int displacement = 0; // as if the block began at 0
    };
    struct Block
    {
        std::vector<int> targets;
        Extreme highest;
        Extreme lowest;

        int size() const { return static_cast<int>(targets.size()); }
        void measure();
    };

    int takeOut(int position);
    void putIn(int position, int target);

    int m_blockSize;
    std::vector<Block> m_blocks;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/rowmoves.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace nk::pm {

RowMoves::RowMoves(const std::vector<int> &targets)
    : m_blockSize(std::max(16, static_cast<int>(std::sqrt(targets.size()))))
{
    const auto step = static_cast<std::size_t>(m_blockSize);
    for (std::size_t start = 0; start < targets.size(); start += step) {
        const auto first = targets.begin() + static_cast<std::ptrdiff_t>(start);
        const auto size = static_cast<std::ptrdiff_t>(std::min(step, targets.size() - start));
        Block block;
        block.targets.assign(first, first + size);
        block.measure();
        m_blocks.push_back(std::move(block));
    }
}

void RowMoves::Block::measure()
{
    highest = lowest = {0, targets.empty() ? 0 : targets.front()};
    for (int offset = 1; offset < size(); ++offset) {
        const int displacement = targets[static_cast<std::size_t>(offset)] - offset;
        if (displacement > highest.displacement)
            highest = {offset, displacement};
        if (displacement < lowest.displacement)
            lowest = {offset, displacement};
    }
}

RowMoves::Candidate RowMoves::furthest() const
{
    Candidate best{0, 0};
    int start = 0;
    const auto consider = [&best, &start](const Extreme &extreme) {
        const int from = start + extreme.offset;
        const int to = from + extreme.displacement - start;
        if (std::abs(to - from) > std::abs(best.to - best.from))
            best = {from, to};
    };
    for (const Block &block : m_blocks) {
        // The upper one first: of two that are equally far it is to win.
        const bool highestIsUpper = block.highest.offset < block.lowest.offset;
        consider(highestIsUpper ? block.highest : block.lowest);
        consider(highestIsUpper ? block.lowest : block.highest);
        start += block.size();
    }
    return best;
}

void RowMoves::move(int from, int to)
{
    putIn(to, takeOut(from));
}

int RowMoves::takeOut(int position)
{
    auto block = m_blocks.begin();
    for (; position >= block->size(); ++block)
        position -= block->size();
    const auto row = block->targets.begin() + position;
    const int target = *row;
    block->targets.erase(row);
    if (block->targets.empty())
        m_blocks.erase(block);
    else
        block->measure();
    return target;
}

void RowMoves::putIn(int position, int target)
{
    if (m_blocks.empty())
        m_blocks.emplace_back();
    auto block = m_blocks.begin();
    for (; position > block->size(); ++block)
        position -= block->size();
    block->targets.insert(block->targets.begin() + position, target);
    if (block->size() > 2 * m_blockSize) {
        Block rest;
        const auto middle = block->targets.begin() + m_blockSize;
        rest.targets.assign(middle, block->targets.end());
        rest.measure();
        block->targets.erase(middle, block->targets.end());
        block = m_blocks.insert(block + 1, std::move(rest)) - 1;
    }
    block->measure();
}

} // namespace nk::pm

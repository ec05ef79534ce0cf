// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/linkchain.h"

#include "index/linktypes.h"

#include <algorithm>

namespace nk::pm {

namespace {

constexpr quint64 mostEntries = quint64(1) << 62;

} // namespace

LinkChain::State LinkChain::next(State state, int linkType)
{
    if (state == Broken)
        return Broken;
    switch (linkType) {
    case IsA:
        return AfterIsOrIsA;
    case Contains:
        return state == AfterIsOrIsA ? Broken : AfterContains;
    case RelatesTo:
        return state == Empty || state == AfterRelatesTo ? AfterRelatesTo : Broken;
    case Is:
        return state == Empty || state == AfterContains ? AfterIsOrIsA : Broken;
    default:
        return Broken;
    }
}

LinkChain::State LinkChain::state(State before) const
{
    for (int last = Broken; last >= AfterRelatesTo; --last) {
        if (m_entries[size_t(last)] > 0)
            return State(last);
    }
    return before;
}

bool LinkChain::isEmpty() const
{
    return state(Empty) == Empty;
}

void LinkChain::push(State state)
{
    m_entries[state] = std::min(m_entries[state] + 1, mostEntries);
}

void LinkChain::append(const LinkChain &other)
{
    for (size_t state = 0; state < m_entries.size(); ++state)
        m_entries[state] = std::min(m_entries[state] + other.m_entries[state], mostEntries);
}

void LinkChain::pop()
{
    Q_ASSERT(!isEmpty());
    --m_entries[state(Empty)];
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/linkchain.h"

#include "index/linktypes.h"

#include <algorithm>

namespace nk::pm {

namespace {

constexpr quint64 maxLength = quint64(1) << 62;

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
    switch (lastRun()) {
    case RelatesToRun:
        return AfterRelatesTo;
    case ContainsRun:
        return AfterContains;
    case IsRun:
    case IsARun:
        return AfterIsOrIsA;
    case BrokenRun:
        return Broken;
    default:
        return before;
    }
}

bool LinkChain::isEmpty() const
{
    return lastRun() < 0;
}

void LinkChain::push(int linkType, State reached)
{
    Run run = BrokenRun;
    if (reached == AfterRelatesTo)
        run = RelatesToRun;
    else if (reached == AfterContains)
        run = ContainsRun;
    else if (reached == AfterIsOrIsA)
        run = linkType == Is ? IsRun : IsARun;
    LinkChain entry;
    entry.m_lengths[run] = 1;
    append(entry);
}

void LinkChain::append(const LinkChain &other)
{
    for (size_t run = 0; run < RunCount; ++run)
        m_lengths[run] = std::min(m_lengths[run] + other.m_lengths[run], maxLength);
}

void LinkChain::pop()
{
    const int run = lastRun();
    Q_ASSERT(run >= 0);
    --m_lengths[size_t(run)];
}

int LinkChain::lastRun() const
{
    int run = BrokenRun;
    while (run >= 0 && m_lengths[size_t(run)] == 0)
        --run;
    return run;
}

} // namespace nk::pm

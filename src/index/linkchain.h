// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QtGlobal>

#include <array>

namespace nk::pm {

/// The link types on the way from a keyword to a package, as far as the chain test tells them
/// apart.
///
/// The test goes from the package back to the keyword with a set of allowed types. It starts with
/// {IsA, Is, RelatesTo, Contains}; Contains leaves {Contains, RelatesTo}, RelatesTo leaves
/// {RelatesTo}, Is leaves {Contains}, IsA leaves the set as it is, and a type outside the set
/// fails. Read from the keyword, the chains that pass are thus RelatesTo*, Contains*, at most one
/// Is, IsA*, with a Contains between RelatesTo and Is. So four lengths tell a chain that passes,
/// and the entries behind the first one that doesn't fit count by their number alone: a chain of
/// any length fits in here, and its last entry can always be taken off again.
class LinkChain
{
public:
    /// What matters for the next entry. Each state stands for the allowed sets with which the chain
    /// test, started behind the chain's end, would still pass.
    enum State : quint8 {
        Empty,          ///< all four sets
        AfterRelatesTo, ///< all but {Contains}
        AfterContains,  ///< all but {RelatesTo}
        AfterIsOrIsA,   ///< the set with which a test starts, alone
        Broken,         ///< none: whatever is appended, the test fails
    };

    /// The state after an entry \a linkType (any number) behind a chain in \a state.
    static State next(State state, int linkType);

    /// The state of this chain, itself standing behind a chain in \a before.
    State state(State before) const;
    bool isEmpty() const;

    /// Appends an entry \a linkType that leads to the state \a reached.
    void push(int linkType, State reached);
    /// Appends \a other, which was made behind this chain's state.
    void append(const LinkChain &other);
    /// Takes the last entry off; there must be one.
    void pop();

private:
    /// Stretches of a chain, in the order in which they follow each other.
    enum Run { RelatesToRun, ContainsRun, IsRun, IsARun, BrokenRun, RunCount };

    int lastRun() const; // -1 if empty

    std::array<quint64, RunCount> m_lengths{}; // saturating, far above what pop() could ever take
};

} // namespace nk::pm

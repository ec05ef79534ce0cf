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
/// Is, IsA*, with a Contains between RelatesTo and Is. What may follow depends on the last entry
/// alone, and these states come in one order. So the number of entries in each state tells the
/// whole chain: one of any length fits in here, and its last entry can always be taken off again.
class LinkChain
{
public:
    /// What an entry leaves behind it. Each state stands for the allowed sets with which the chain
    /// test, started behind the chain's end, would still pass.
    enum State : quint8 {
        AfterRelatesTo, ///< all sets but {Contains}
        AfterContains,  ///< all sets but {RelatesTo}
        AfterIsOrIsA,   ///< only the set with which a test starts
        Broken,         ///< none: whatever is appended, the test fails
        Empty,          ///< all sets: no entry yet
    };

    /// The state after an entry \a linkType (any number) behind a chain in \a state.
    static State next(State state, int linkType);

    /// The state of this chain, itself standing behind a chain in \a before.
    State state(State before) const;
    bool isEmpty() const;

    /// Appends an entry that leads to \a state.
    void push(State state);
    /// Appends \a other, which was made behind this chain's state.
    void append(const LinkChain &other);
    /// Takes the last entry off; there must be one.
    void pop();

private:
    std::array<quint64, Empty> m_entries{}; // by state; saturating, far above what pop() could take
};

} // namespace nk::pm

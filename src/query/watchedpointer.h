// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QPointer>

namespace nk::pm {

/// What a property of pointer type holds: an object that isn't owned and may die at any moment.
///
/// Like QPointer it reads null from then on. Unlike QPointer it remembers that something was set,
/// so that a setter called with null afterwards is a change and drops what the dead object left
/// behind.
template<typename T>
class WatchedPointer
{
public:
    T *get() const { return m_pointer.data(); }
    /// Whether assigning \a other would change nothing.
    bool holds(const T *other) const { return other ? m_pointer == other : !m_set; }
    void assign(T *other)
    {
        m_pointer = other;
        m_set = other != nullptr;
    }

    /// Assigns \a other and drops the connections from the present object to \a owner. False, with
    /// nothing done, if that would change nothing.
    bool replace(T *other, QObject *owner)
    {
        if (holds(other))
            return false;
        if (m_pointer)
            QObject::disconnect(m_pointer, nullptr, owner, nullptr);
        assign(other);
        return true;
    }

private:
    QPointer<T> m_pointer;
    bool m_set = false;
};

} // namespace nk::pm

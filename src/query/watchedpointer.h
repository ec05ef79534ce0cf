// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QPointer>

namespace nk::pm {

/// What a property of pointer type holds: an object that isn't owned and may die at any moment.
///
/// Like QPointer it reads null from then on. Unlike QPointer it remembers that something was set,
/// so that a setter called with null afterwards is a change and drops what the dead object left
/// behind. Part of its owner's private record: what it has called ends with that.
template<typename T>
class WatchedPointer
{
public:
    T *get() const { return m_pointer.data(); }
    /// Whether assigning \a other would change nothing.
    bool holds(const T *other) const { return other ? m_pointer == other : !m_set; }

    /// Assigns \a other and drops the connections to the present object. False, with nothing done,
    /// if that would change nothing.
    bool replace(T *other)
    {
        if (holds(other))
            return false;
        if (m_pointer)
            QObject::disconnect(m_pointer, nullptr, &m_context, nullptr);
        m_pointer = other;
        m_set = other != nullptr;
        return true;
    }

    /// Has \a function called at \a signal of the object; does nothing for null.
    template<typename Signal, typename Function>
    void connect(Signal signal, Function function)
    {
        if (m_pointer)
            QObject::connect(m_pointer.data(), signal, &m_context, function);
    }

private:
    QPointer<T> m_pointer;
    bool m_set = false;
    QObject m_context;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

#include <QPointer>
#include <QVector>

#include <functional>

namespace nk::pm {

/// The declared fields of a QML-facing object, behind its property manifestFields. They aren't
/// owned and may die at any moment; an entry then reads null.
///
/// However many changes one turn of the event loop brings, one call tells of them, after it. Part
/// of its owner's private record: what it has called ends with that.
class ManifestFieldList
{
public:
    /// \a owner, whose record holds this list, outlives it. \a process tells of changes.
    ManifestFieldList(QObject *owner, const std::function<void()> &process);

    // The callbacks of the property.
    void append(ManifestField *field);
    int count() const { return m_fields.size(); }
    /// Null outside the list too.
    ManifestField *at(int i) const { return m_fields.value(i); }
    /// Nothing for an empty list. Ends what listen() has begun.
    void clear();

    const QVector<QPointer<ManifestField>> &fields() const { return m_fields; }

    /// Has \a function called at each living field's updateRequested(), once more for each call.
    void listen(const std::function<void()> &function);

    /// Whether the fields have changed since the last call.
    bool takeChange();

private:
    void scheduleChange();

    QObject *m_owner;
    std::function<void()> m_process;
    bool m_changePending = false;
    QVector<QPointer<ManifestField>> m_fields;
    QObject m_context;
};

} // namespace nk::pm

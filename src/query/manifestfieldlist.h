// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/manifestfield.h"

#include <QPointer>
#include <QVector>

namespace nk::pm {

/// The declared fields of a QML-facing object, behind its property manifestFields. They aren't
/// owned and may die at any moment; an entry then reads null.
///
/// However many changes one turn of the event loop brings, the owner's slot processFieldChange()
/// is called once, after it.
class ManifestFieldList
{
public:
    /// \a owner, whose record holds this list, outlives it.
    explicit ManifestFieldList(QObject *owner);

    // The callbacks of the property.
    void append(ManifestField *field);
    int count() const { return m_fields.size(); }
    /// Null outside the list too.
    ManifestField *at(int i) const { return m_fields.value(i); }
    /// Nothing for an empty list.
    void clear();

    const QVector<QPointer<ManifestField>> &fields() const { return m_fields; }

    /// Whether the fields have changed since the last call.
    bool takeChange();

private:
    void scheduleChange();

    QObject *m_owner;
    bool m_changePending = false;
    QVector<QPointer<ManifestField>> m_fields;
};

} // namespace nk::pm

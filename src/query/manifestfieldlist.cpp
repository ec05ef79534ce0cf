// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestfieldlist.h"

#include <QQmlInfo>

#include <utility>

namespace nk::pm {

ManifestFieldList::ManifestFieldList(QObject *owner)
    : m_owner(owner)
{}

void ManifestFieldList::append(ManifestField *field)
{
    if (!field)
        qmlWarning(m_owner) << "null is no manifest field";
    m_fields.append(field);
    scheduleChange();
}

void ManifestFieldList::clear()
{
    if (m_fields.isEmpty())
        return;
    for (ManifestField *field : qAsConst(m_fields)) {
        if (field)
            QObject::disconnect(field, nullptr, m_owner, nullptr);
    }
    m_fields.clear();
    scheduleChange();
}

bool ManifestFieldList::takeChange()
{
    return std::exchange(m_changePending, false);
}

void ManifestFieldList::scheduleChange()
{
    if (m_changePending)
        return;
    m_changePending = true;
    QMetaObject::invokeMethod(m_owner, "processFieldChange", Qt::QueuedConnection);
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/manifestfieldlist.h"

#include <QQmlInfo>

#include <utility>

namespace nk::pm {

ManifestFieldList::ManifestFieldList(QObject *owner, const std::function<void()> &process)
    : m_owner(owner)
    , m_process(process)
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
            QObject::disconnect(field, nullptr, &m_context, nullptr);
    }
    m_fields.clear();
    scheduleChange();
}

void ManifestFieldList::listen(const std::function<void()> &function)
{
    for (ManifestField *field : qAsConst(m_fields)) {
        if (field)
            QObject::connect(field, &ManifestField::updateRequested, &m_context, function);
    }
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
    QMetaObject::invokeMethod(&m_context, m_process, Qt::QueuedConnection);
}

} // namespace nk::pm

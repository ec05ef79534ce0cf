// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/stringpool.h"

namespace nk::pm {

StringPool::StringPool()
    : m_table(std::make_unique<QHash<QString, QStringRef>>())
{}

QStringRef StringPool::add(const QString &string)
{
    if (!m_table || string.isEmpty())
        return QStringRef();
    const auto known = m_table->constFind(string);
    if (known != m_table->constEnd())
        return *known;
    // New texts stay out of the table on purpose: each text gets a place of its own. References
    // compare by content, and a table of all texts would cost more than the copies it saves.
    const int position = m_text.size();
    m_text += string;
    return QStringRef(&m_text, position, string.size());
}

void StringPool::close()
{
    m_table.reset();
    m_text.squeeze();
}

} // namespace nk::pm

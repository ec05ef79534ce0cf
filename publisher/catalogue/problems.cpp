// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/problems.h"

#include <algorithm>
#include <tuple>

namespace nk::pm::publisher {

void Problems::error(const QString &file, const QString &text)
{
    m_list.append({Problem::Error, file, text});
}

void Problems::warning(const QString &file, const QString &text)
{
    m_list.append({Problem::Warning, file, text});
}

void Problems::append(const Problems &others)
{
    m_list += others.m_list;
}

int Problems::errorCount() const
{
    return int(std::count_if(m_list.cbegin(), m_list.cend(), [](const Problem &problem) {
        return problem.severity == Problem::Error;
    }));
}

QVector<Problem> Problems::sorted() const
{
    QVector<Problem> list = m_list;
    std::sort(list.begin(), list.end(), [](const Problem &a, const Problem &b) {
        return std::tie(a.file, b.severity, a.text) < std::tie(b.file, a.severity, b.text);
    });
    return list;
}

} // namespace nk::pm::publisher

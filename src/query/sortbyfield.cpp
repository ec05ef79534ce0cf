// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "query/sortbyfield.h"

namespace nk::pm {

SortByField::SortByField(QObject *parent)
    : PackageSorter(parent)
{}

SortByField::~SortByField() = default;

void SortByField::setName(const QString &name)
{
    if (m_name == name)
        return;
    m_name = name;
    Q_EMIT nameChanged();
}

} // namespace nk::pm

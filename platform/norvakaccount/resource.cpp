// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakaccount/resource.h"

namespace nk::account {

Resource::Resource(const QString &uuid, QObject *parent)
    : QObject(parent)
    , m_uuid(uuid)
{}

Resource::~Resource() = default;

QString Resource::uuid() const
{
    return m_uuid;
}

} // namespace nk::account

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "preferences.h"

namespace nk::pm::app {

Preferences::Preferences(Lifetime lifetime, QObject *parent)
    : QObject(parent)
{
    if (lifetime == Lifetime::Persistent)
        m_settings = std::make_unique<QSettings>();
}

QVariant Preferences::value(const QString &key, const QVariant &fallback) const
{
    QVariant value = m_settings ? m_settings->value(key) : m_values.value(key);
    const bool fits = value.isValid() && value.convert(int(fallback.type()));
    return fits ? value : fallback;
}

void Preferences::setValue(const QString &key, const QVariant &value)
{
    if (m_settings)
        m_settings->setValue(key, value);
    else
        m_values.insert(key, value);
}

} // namespace nk::pm::app

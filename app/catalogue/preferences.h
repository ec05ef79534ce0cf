// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QSettings>
#include <QVariant>

#include <memory>

namespace nk::pm::app {

/// What the application remembers from one start to the next; nothing at all when it is passing,
/// for tests and pictures.
class Preferences : public QObject
{
    Q_OBJECT

public:
    enum class Lifetime { Persistent, Passing };

    explicit Preferences(Lifetime lifetime, QObject *parent = nullptr);

    /// The value last set for \a key, else \a fallback, in whose type it is given: a file of
    /// settings knows texts only.
    Q_INVOKABLE QVariant value(const QString &key, const QVariant &fallback) const;
    Q_INVOKABLE void setValue(const QString &key, const QVariant &value);

private:
    std::unique_ptr<QSettings> m_settings; // null when passing
    QVariantHash m_values;
};

} // namespace nk::pm::app

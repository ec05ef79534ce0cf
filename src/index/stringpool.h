// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QHash>
#include <QString>
#include <QStringRef>

#include <memory>

namespace nk::pm {

/// All texts of an index's nodes in one string, so that a text costs no allocation of its own.
///
/// A reference names the string object and a position in it: the text may grow while references to
/// it are held, but the pool must not move.
class StringPool
{
public:
    StringPool();

    /// A reference to a copy of \a string; null if it is empty or the pool is closed.
    QStringRef add(const QString &string);

    /// Ends the time of adding; what was added stays valid for the pool's life.
    void close();

private:
    Q_DISABLE_COPY(StringPool)

    QString m_text;
    std::unique_ptr<QHash<QString, QStringRef>> m_table; // null once the pool is closed
};

} // namespace nk::pm

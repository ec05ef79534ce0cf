// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QAbstractItemModel>
#include <QSemaphore>
#include <QSharedPointer>
#include <QStringList>

#include <atomic>

namespace nk::pm::test {

/// Writes down what a model tells its views, as "reset", "insert 1 2", "remove 1 2", "move 0 3"
/// (positions after the move), and further signals that the test adds.
class ModelLog
{
public:
    explicit ModelLog(QAbstractItemModel &model);

    template<typename Object>
    void add(Object &object, void (Object::*signal)(), const QString &name)
    {
        QObject::connect(&object, signal, &m_context, [this, name] { m_entries.append(name); });
    }
    QStringList take() { return std::exchange(m_entries, {}); }

private:
    QObject m_context;
    QStringList m_entries;
};

/// The first role of all rows, joined with blanks.
QString ids(const QAbstractItemModel &model);

/// Lets an update of \a model that is due or running come to its end.
void settle(QObject &model);

/// Lets packages through by their identifiers, and tells how it was used.
class IdMatcher : public PackageMatcher
{
public:
    QStringList accepted; ///< call change() after a change
    int functionsMade = 0;
    /// With a gate the next function made waits there for a permit at its first package.
    QSharedPointer<QSemaphore> gate;

    void change() { Q_EMIT updateRequested(); }
    std::function<bool(PackageNode *)> matchFunction() override;
};

} // namespace nk::pm::test

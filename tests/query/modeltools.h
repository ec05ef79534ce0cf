// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "query/packagematcher.h"

#include <QAbstractItemModel>
#include <QSemaphore>
#include <QSharedPointer>
#include <QStringList>

#include <atomic>

namespace nk::pm {
class ManifestField;
}

namespace nk::pm::test {

/// Writes down the signals that the test adds, in the order in which they come.
class SignalLog
{
public:
    template<typename Object, typename Base>
    SignalLog &add(Object &object, void (Base::*signal)(), const QString &name)
    {
        QObject::connect(&object, signal, &m_context, [this, name] { m_entries.append(name); });
        return *this;
    }
    QStringList take() { return std::exchange(m_entries, {}); }

protected:
    QObject m_context;
    QStringList m_entries;
};

/// What a model tells its views too, as "reset", "insert 1 2", "remove 1 2", "move 0 3" (positions
/// after the move).
class ModelLog : public SignalLog
{
public:
    explicit ModelLog(QAbstractItemModel &model);
};

/// The first role of all rows, joined with blanks.
QString ids(const QAbstractItemModel &model);

/// Lets an update of \a model that is due or running come to its end.
void settle(QObject &model);

/// Appends to the list property manifestFields of \a object.
template<typename Object>
void addFields(Object &object, std::initializer_list<ManifestField *> fields)
{
    auto property = object.manifestFields();
    for (ManifestField *field : fields)
        property.append(&property, field);
}

/// Lets packages through by their identifiers, none at first, and tells how it was used.
class IdMatcher : public PackageMatcher
{
public:
    int functionsMade = 0;
    /// With a gate the next function made waits there for a permit at its first package.
    QSharedPointer<QSemaphore> gate;

    /// Lets through \a ids, which are joined with blanks, and asks for an update.
    void accept(const QString &ids);
    std::function<bool(PackageNode *)> matchFunction() override;

private:
    QStringList m_accepted;
};

} // namespace nk::pm::test

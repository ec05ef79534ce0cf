// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packagerepository.h"

#include <QDeadlineTimer>
#include <QFutureWatcher>
#include <QHash>
#include <QList>
#include <QPointer>
#include <QSharedPointer>
#include <QString>

namespace nk::pm {

/// What PackageRepository knows. Its references and translations are filled by src/references,
/// where the operations that deal in them are.
struct PackageRepositoryPrivate
{
    using IndexWatcher = QFutureWatcher<QSharedPointer<PackageIndex>>;

    /// Calls \a ask for each source, by ascending priority. A call may add and remove sources: one
    /// that is gone isn't asked any more, a new one not yet. It may even destroy the repository;
    /// false then.
    template<typename Ask>
    bool forEachSource(Ask ask) const
    {
        const QPointer<PackageRepository> repository(q);
        const QList<PackageSource *> asked = sources;
        for (PackageSource *source : asked) {
            if (!sources.contains(source))
                continue;
            ask(source);
            if (!repository)
                return false;
        }
        return true;
    }

    PackageRepository *q;
    QList<PackageSource *> sources; // by ascending priority; not owned
    QSharedPointer<PackageIndex> packageIndex;
    IndexWatcher *watcher;                         // of the newest build; child of q
    QHash<QString, PackageReference *> references; // children of q
    bool updateScheduled;
    PackageRepository::SourcePersistencePolicy persistencePolicy;
    QDeadlineTimer sourceUpdateDeadline; // earliest time of the next refresh of all sources
    QHash<QString, PackageReference *> translationReferences;
};

} // namespace nk::pm

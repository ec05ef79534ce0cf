// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "repository/packagerepository.h"

#include <QDeadlineTimer>
#include <QFutureWatcher>
#include <QHash>
#include <QList>
#include <QSharedPointer>
#include <QString>

namespace nk::pm {

/// What PackageRepository knows. Its references and translations are filled by src/references,
/// where the operations that deal in them are.
struct PackageRepositoryPrivate
{
    using IndexWatcher = QFutureWatcher<QSharedPointer<PackageIndex>>;

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

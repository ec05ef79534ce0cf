// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/filestore.h"
#include "install/storecare.h"

#include <QObject>
#include <QSharedPointer>
#include <QStringList>

namespace nk::pm {

struct CareTask;
struct StoreFetchPrivate;

/// Brings files into the store, each by the first of its downloads that gives the right content,
/// whatever the store's policy. Destroyed before its end, it leaves the store unchanged. GUI
/// thread.
class StoreFetch final : public QObject
{
    Q_OBJECT

public:
    /// Begins. \a task is told of each digest that was dealt with, and may end the whole early.
    StoreFetch(
        const QSharedPointer<FileStore> &store, const QStringList &digests,
        const FileFinder &finder, const std::shared_ptr<CareTask> &task, QObject *parent);
    ~StoreFetch() override;

Q_SIGNALS:
    /// Each file is there, or can't be had. Never within the constructor.
    void finished();

private:
    QScopedPointer<StoreFetchPrivate> d;
};

} // namespace nk::pm

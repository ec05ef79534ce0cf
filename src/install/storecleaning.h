// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/storecare.h"
#include "install/storecensus.h"

namespace nk::pm {

/// Counts \a census; what is linked below \a roots is in use.
StoreUsage usageOf(const StoreCensus &census, const QStringList &roots, const CareTask &task);

/// Makes room as StoreCare::clean() says, in the store \a directory whose StoreLock has the path
/// \a lockPath. Fills in what was removed and the outcome. For a thread that may wait for the disk.
void cleanStore(
    const QString &directory, const QString &lockPath, const QStringList &roots,
    qint64 maximumBytes, CareTask &task, StoreReport &report);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::publisher {

struct PruneReport
{
    int removedFiles = 0;
    qint64 removedBytes = 0;
    int keptFiles = 0;
    QString fault; ///< why nothing, or not everything, was removed; empty if all was
};

/// Removes the content files of the publication \a target that its ledger doesn't name. With
/// \a dryRun only counts them. Clients that still follow an older ledger lose its files, so this is
/// for later than the publication.
PruneReport prune(const QString &target, bool dryRun);

} // namespace nk::pm::publisher

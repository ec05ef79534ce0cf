// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace nk::pm {

/// Absolute path of the parent of all install roots, below the data location. Safe on any thread.
QString installRoots();

/// Removes the install roots that are older than 300 seconds and that nobody has locked. For the
/// thread pool: it waits up to 350 ms for each lock. Several runs, of several processes too, may
/// overlap. Ends early when the application is closing down.
void removeStaleLocations();

/// Absolute paths of all install roots.
QStringList installLocations();

/// Of these, those that the next removeStaleLocations() would leave.
QStringList usedLocations();

/// removeStaleLocations() for the directories below \a parent, with ages seen from \a now.
void sweepLocations(const QString &parent, const QDateTime &now);

} // namespace nk::pm

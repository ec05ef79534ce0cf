// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm {

// How names that come from servers are kept inside a directory. All functions are pure but for
// linksStayInside(), which reads the disk; all are safe on any thread.

/// The cleaned path of \a joined, which is relative to a root directory, if it is \a base or lies
/// below it; null otherwise. \a base is such a cleaned path itself ("." for the root).
QString pathInside(const QString &base, const QString &joined);

/// The cleaned path of the file \a fileName in the directory \a base of a root; null if the name is
/// empty, absolute, leads out of \a base or names \a base itself.
QString filePathInside(const QString &base, const QString &fileName);

/// Whether every symbolic link among the existing steps from the directory \a root to \a root /
/// \a path leads to a place below \a root. A dangling link doesn't.
bool linksStayInside(const QString &root, const QString &path);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::app {

/// What keeps the directory \a path from being read as a catalogue, for the user; empty if nothing
/// does.
QString directoryFault(const QString &path);

/// What is wrong with \a path, which is made if it is missing, as the place of the program's own
/// files, as a text for the user; empty if nothing is.
QString dataDirectoryFault(const QString &path);

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::app {

/// What keeps the directory \a path from being read as a catalogue, for the user; empty if nothing
/// does.
QString directoryFault(const QString &path);

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/packagepath.h"

namespace nk::pm {

/// Whether \a name, which a server may have chosen, names an entry of its own in a directory on any
/// system, and one that isn't hidden.
inline bool namesEntry(const QString &name)
{
    return isPathComponent(name) && !name.startsWith(QLatin1Char('.'))
           && !name.contains(QLatin1Char('\\'));
}

} // namespace nk::pm

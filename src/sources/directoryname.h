// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm {

/// Whether \a name, which a server may have chosen, names an entry of its own in a directory, and
/// one that isn't hidden: not empty, no leading dot, no separator of any system, no NUL.
inline bool namesEntry(const QString &name)
{
    return !name.isEmpty() && !name.startsWith(QLatin1Char('.')) && !name.contains(QLatin1Char('/'))
           && !name.contains(QLatin1Char('\\')) && !name.contains(QChar::Null);
}

} // namespace nk::pm

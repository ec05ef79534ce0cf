// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>
#include <QString>
#include <QStringList>

#include <algorithm>

namespace nk::pm {

// Which directory belongs to which package. Identifiers and types come from servers, and the
// identifier isn't even signed: were they joined as they are, "../furniture/chair" would lay its
// files among another package's. Pure, and in this header alone, so that who writes catalogues and
// who lays packages down elsewhere judge by the same rule.

/// Whether \a name names an entry of whatever directory it is joined to, and nothing else.
inline bool isPathComponent(const QString &name)
{
#ifdef Q_OS_WIN
    // Drive letters and alternate data streams; and the system drops what stands at the end.
    if (name.contains(QLatin1Char(':')) || name.endsWith(QLatin1Char('.'))
        || name.endsWith(QLatin1Char(' ')))
        return false;
#endif
    // Halves of characters have no bytes of their own on disk: two such names may be one there.
    return !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..")
           && !QDir::fromNativeSeparators(name).contains(QLatin1Char('/'))
           && !name.contains(QChar(QChar::Null)) && name.isValidUtf16();
}

/// The directory of the package \a id of \a type, relative to a root: the type's levels, which are
/// joined with ":", then the identifier. No two packages have the same one, but the directory of
/// one may lie in another's. Null if the identifier or a level isn't an ordinary path component;
/// such a package has no directory. A package without a type has one.
inline QString packagePath(const QString &type, const QString &id)
{
    QStringList steps = type.isEmpty() ? QStringList() : type.split(QLatin1Char(':'));
    steps.append(id);
    return std::all_of(steps.cbegin(), steps.cend(), isPathComponent) ? steps.join(QLatin1Char('/'))
                                                                      : QString();
}

} // namespace nk::pm

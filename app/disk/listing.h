// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

namespace nk::pm::disk {

/// What a directory holds, hidden entries too. QDir gives an empty list for an error.
struct Listing
{
    QStringList files;       ///< whatever isn't a directory, by name
    QStringList directories; ///< links to directories too
    QString fault;           ///< why the rest of it is missing; empty if nothing is
};

/// A directory that doesn't exist holds nothing.
Listing listing(const QString &path);

} // namespace nk::pm::disk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QStringList>

namespace nk::pm::test {

/// Writes \a content to the file \a path, making its directories.
void writeFile(const QString &path, const QByteArray &content);

/// \a size bytes, others for each \a number.
QByteArray numberedContent(int number, int size);

/// The content of the file \a path; null if it can't be read.
QByteArray readFile(const QString &path);

/// The paths of all files below \a directory, hidden ones too.
QStringList filesBelow(const QString &directory);

/// Lets the file \a path have been written \a seconds ago.
void makeOld(const QString &path, int seconds);

/// Makes a symbolic link at \a path that says \a target, whether or not that exists.
void makeLink(const QString &path, const QString &target);

/// A directory on another file system than the temporary directory, where files can't be
/// hard-linked to; empty if the machine has none.
QString otherVolume();

} // namespace nk::pm::test

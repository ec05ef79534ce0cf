// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <atomic>
#include <vector>

class QFile;

/// How a directory source reads. What isn't there is no fault; what is there and can't be read is
/// passed over as well, but told: Qt's own functions take the one for the other. Any thread.
namespace nk::pm {

/// True until something couldn't be read.
using WholeFlag = std::atomic<bool>;

struct DirectoryEntry
{
    enum Kind { File, Directory };
    QString name;
    Kind kind;
    bool isLink; ///< to one of that kind
};

/// The regular files and the directories in the directory \a path, links to such included, in the
/// order of the file system. Not the hidden ones, nor those whose names are no text; no more once
/// the application closes down.
std::vector<DirectoryEntry> readDirectory(const QString &path, WholeFlag &isWhole);

/// The path without links; empty if there is nothing.
QString canonicalPath(const QString &path, WholeFlag &isWhole);

/// Opens a regular \a file to read it: to open a pipe would be to wait for its other end.
bool openFile(QFile &file, WholeFlag &isWhole);
/// To be called once \a file was read.
void noteRead(const QFile &file, WholeFlag &isWhole);

} // namespace nk::pm

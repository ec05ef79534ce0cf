// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/localdirectory.h"

#include "closing/closingdown.h"

#include <QFile>
#include <QFileInfo>

#include <filesystem>

namespace fs = std::filesystem;

namespace nk::pm {

namespace {

void note(const std::error_code &error, WholeFlag &isWhole)
{
    for (const auto absent :
         {std::errc::no_such_file_or_directory, std::errc::not_a_directory,
          std::errc::too_many_symbolic_link_levels}) {
        if (error == absent)
            return;
    }
    if (error)
        isWhole = false;
}

fs::path nativePath(const QString &path)
{
    return fs::u8path(path.toStdString());
}

fs::file_type typeOf(const QString &path, WholeFlag &isWhole)
{
    std::error_code error;
    const fs::file_type type = fs::status(nativePath(path), error).type();
    note(error, isWhole);
    return type;
}

} // namespace

std::vector<DirectoryEntry> readDirectory(const QString &path, WholeFlag &isWhole)
{
    std::vector<DirectoryEntry> entries;
    std::error_code error;
    fs::directory_iterator it(nativePath(path), error);
    for (; !error && it != fs::directory_iterator() && !isClosingDown(); it.increment(error)) {
        const std::string bytes = it->path().filename().u8string();
        const QString name = QString::fromStdString(bytes);
        if (name.startsWith(QLatin1Char('.')) || name.toStdString() != bytes)
            continue;
        std::error_code fault;
        const bool isDirectory = it->is_directory(fault);
        if (isDirectory || (!fault && it->is_regular_file(fault)))
            entries.push_back(
                {name, isDirectory ? DirectoryEntry::Directory : DirectoryEntry::File,
                 it->is_symlink(fault)});
        note(fault, isWhole);
    }
    note(error, isWhole);
    return entries;
}

QString canonicalPath(const QString &path, WholeFlag &isWhole)
{
    QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty() && typeOf(path, isWhole) != fs::file_type::not_found)
        isWhole = false;
    return canonical;
}

bool openFile(QFile &file, WholeFlag &isWhole)
{
    if (typeOf(file.fileName(), isWhole) != fs::file_type::regular)
        return false;
    const bool isOpen = file.open(QIODevice::ReadOnly);
    if (!isOpen)
        isWhole = false;
    return isOpen;
}

void noteRead(const QFile &file, WholeFlag &isWhole)
{
    if (file.error() != QFileDevice::NoError)
        isWhole = false;
}

} // namespace nk::pm

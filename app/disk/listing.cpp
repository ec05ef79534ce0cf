// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "disk/listing.h"

#include <QFile>

#include <filesystem>

namespace fs = std::filesystem;

namespace nk::pm::disk {

Listing listing(const QString &path)
{
    Listing result;
    std::error_code error;
    fs::directory_iterator it(fs::u8path(path.toStdString()), error);
    while (!error && it != fs::directory_iterator()) {
        const QString name = QString::fromStdString(it->path().filename().u8string());
        const fs::file_status status = it->status(error);
        (fs::is_directory(status) ? result.directories : result.files).append(name);
        if (status.type() != fs::file_type::none)
            it.increment(error); // which forgets that a link leads nowhere
    }
    result.files.sort();
    result.directories.sort();
    if (error && error != std::errc::no_such_file_or_directory)
        result.fault =
            QStringLiteral("can't read %1: %2").arg(path, QString::fromStdString(error.message()));
    return result;
}

} // namespace nk::pm::disk

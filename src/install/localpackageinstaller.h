// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "install/packageinstaller.h"

#include <QDir>

namespace nk::pm {

/// Installs one package whose files lie in a directory: links or copies each of them, but the
/// manifest, into the location, on the global thread pool. Sub-directories aren't entered. A
/// directory that doesn't exist gives a package without files, and no error.
class LocalPackageInstaller final : public PackageInstaller
{
    Q_OBJECT

public:
    enum ErrorCode {
        InstallFailed = 1, ///< a file could be neither linked nor copied
    };

    /// Begins the work. \a source is the package's directory.
    LocalPackageInstaller(const QDir &source, const InstallLocation &location);

private Q_SLOTS:
    void installFinished();
};

} // namespace nk::pm

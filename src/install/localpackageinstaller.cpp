// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/localpackageinstaller.h"

#include "closing/closingdown.h"
#include "install/installdirectory.h"

#include <QDirIterator>
#include <QFutureWatcher>
#include <QtConcurrent>

namespace nk::pm {

namespace {

using ErrorWatcher = QFutureWatcher<QList<InstallError>>;

QList<InstallError> installFiles(const QDir &source, const InstallLocation &location)
{
    QList<InstallError> errors;
    const InstallDirectory directory(location);
    QDirIterator files(source);
    while (files.hasNext() && !isClosingDown()) {
        const QString path = files.next();
        if (files.fileName() == QLatin1String("manifest.json"))
            continue;
        if (!directory.installFile(path, files.fileName())) {
            const QString message = QStringLiteral("Failed to install file %1").arg(path);
            errors.append(InstallError{LocalPackageInstaller::InstallFailed, message});
        }
    }
    return errors;
}

} // namespace

LocalPackageInstaller::LocalPackageInstaller(const QDir &source, const InstallLocation &location)
    : PackageInstaller(location)
{
    QDir files = source;
    files.setFilter(QDir::Files);
    auto *watcher = new ErrorWatcher(this);
    connect(watcher, &ErrorWatcher::finished, this, &LocalPackageInstaller::installFinished);
    watcher->setFuture(
        QtConcurrent::run([files, location] { return installFiles(files, location); }));
}

void LocalPackageInstaller::installFinished()
{
    const auto *watcher = static_cast<ErrorWatcher *>(sender());
    const auto errors = watcher->result();
    for (const InstallError &error : errors)
        addError(error);
    finish();
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/storecensus.h"

#include "install/caretask.h"
#include "install/filestore.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#ifdef Q_OS_UNIX
#include <sys/stat.h>
#endif

namespace nk::pm {

namespace {

const QString &removedSuffix()
{
    static const QString suffix = QStringLiteral(".damaged");
    return suffix;
}

void count(StoreCensus &census, const QString &path, const FileStatus &status)
{
    const QString name = path.section(QLatin1Char('/'), -1);
    const QString start = path.section(QLatin1Char('/'), -2, -2);
    const QString hidden = start + name.section(QLatin1Char('.'), 1, 1);
    if (FileStore::isValidDigest(start + name))
        census.files.append({path, start + name, status});
    else if (name.endsWith(removedSuffix()) && FileStore::isValidDigest(hidden))
        census.removed.append({path, hidden, status});
    else
        census.leftovers.append({path, QString(), status});
}

} // namespace

#ifdef Q_OS_UNIX

std::optional<FileStatus> fileStatus(const QString &path)
{
    struct stat file
    {};
    if (::lstat(QFile::encodeName(path).constData(), &file) != 0 || !S_ISREG(file.st_mode))
        return std::nullopt;
    constexpr qint64 second = 1000000000;
    FileStatus status;
    status.identity = {quint64(file.st_dev), quint64(file.st_ino)};
    status.size = file.st_size;
    status.links = file.st_nlink;
#ifdef Q_OS_DARWIN
    status.changed = file.st_ctimespec.tv_sec * second + file.st_ctimespec.tv_nsec;
#else
    status.changed = file.st_ctim.tv_sec * second + file.st_ctim.tv_nsec;
#endif
    return status;
}

#else

std::optional<FileStatus> fileStatus(const QString &path)
{
    const QFileInfo file(path);
    if (!file.isFile() || file.isSymLink())
        return std::nullopt;
    FileStatus status;
    status.size = file.size();
    status.changed = file.lastModified().toMSecsSinceEpoch() * 1000000;
    return status;
}

#endif

StoreCensus takeCensus(const QString &directory, const CareTask &task)
{
    StoreCensus census;
    QDirIterator entries(
        directory, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    while (entries.hasNext() && task.goesOn()) {
        const QString path = entries.next();
        if (const auto status = fileStatus(path))
            count(census, path, *status);
    }
    return census;
}

QString removedPath(const QString &path, const FileStatus &status)
{
    const QFileInfo file(path);
    return QStringLiteral("%1/.%2.%3").arg(file.path(), file.fileName()).arg(status.identity.inode)
           + removedSuffix();
}

void visitInstalledFiles(
    const QStringList &roots, const CareTask &task,
    const std::function<void(const QString &path, const FileStatus &status)> &visit)
{
    for (const QString &root : roots) {
        QDirIterator entries(
            root, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
        while (entries.hasNext() && task.goesOn()) {
            const QString path = entries.next();
            const auto status = fileStatus(path);
            if (status && status->links > 1)
                visit(path, *status);
        }
    }
}

} // namespace nk::pm

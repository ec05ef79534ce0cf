// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filecopy.h"

#include "closing/closingdown.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace nk::pm {

namespace {

constexpr int blockSize = 256 * 1024; // bytes

#ifdef Q_OS_WIN

const wchar_t *nativePath(const QString &native)
{
    return reinterpret_cast<const wchar_t *>(native.utf16());
}

bool renameWithoutReplacing(const QString &from, const QString &to)
{
    const QString nativeFrom = QDir::toNativeSeparators(from);
    const QString nativeTo = QDir::toNativeSeparators(to);
    return MoveFileExW(nativePath(nativeFrom), nativePath(nativeTo), 0);
}

#else

bool renameWithoutReplacing(const QString &from, const QString &to)
{
    // Only where hard links don't exist. Between the test and the call another thread may lay the
    // same file down; replacing it then as a whole does no harm.
    return !QFileInfo::exists(to) && moveOver(from, to);
}

#endif

bool copyContent(QFile &source, QFile &target)
{
    QByteArray block(blockSize, Qt::Uninitialized);
    qint64 copied = 0;
    qint64 count = 0;
    while ((count = source.read(block.data(), block.size())) > 0) {
        if (isClosingDown() || target.write(block.constData(), count) != count)
            return false;
        copied += count;
    }
    return count == 0 && copied == source.size() && target.flush();
}

} // namespace

bool moveOver(const QString &source, const QString &target)
{
#ifdef Q_OS_WIN
    const QString nativeSource = QDir::toNativeSeparators(source);
    const QString nativeTarget = QDir::toNativeSeparators(target);
    return MoveFileExW(
        nativePath(nativeSource), nativePath(nativeTarget), MOVEFILE_REPLACE_EXISTING);
#else
    return std::rename(QFile::encodeName(source).constData(), QFile::encodeName(target).constData())
           == 0;
#endif
}

bool hardLink(const QString &source, const QString &target)
{
#ifdef Q_OS_WIN
    const QString nativeSource = QDir::toNativeSeparators(source);
    const QString nativeTarget = QDir::toNativeSeparators(target);
    return CreateHardLinkW(nativePath(nativeTarget), nativePath(nativeSource), nullptr);
#else
    // Without AT_SYMLINK_FOLLOW a symbolic link would be given the second name, not its content.
    return ::linkat(
               AT_FDCWD, QFile::encodeName(source).constData(), AT_FDCWD,
               QFile::encodeName(target).constData(), AT_SYMLINK_FOLLOW)
           == 0;
#endif
}

bool copyFile(const QString &source, const QString &target)
{
    QFile from(source);
    if (!from.open(QIODevice::ReadOnly))
        return false;
    QTemporaryFile to(QFileInfo(target).path() + QLatin1String("/.XXXXXX.part"));
    if (!to.open() || !copyContent(from, to))
        return false;
    to.setPermissions(from.permissions());
    to.close();
    return hardLink(to.fileName(), target) || renameWithoutReplacing(to.fileName(), target);
}

} // namespace nk::pm

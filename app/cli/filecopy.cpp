// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "filecopy.h"

#include <QFile>

#include <unistd.h>

namespace nk::pm::cli {
namespace {

constexpr qint64 pieceSize = 1024 * 1024;

QString fault(const QFile &file)
{
    return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
}

/// A disk that gets full takes a part, and says why not the rest only when asked once more.
bool writeAll(QFile &file, const QByteArray &bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 written = file.write(bytes.constData() + done, bytes.size() - done);
        if (written <= 0)
            return false;
        done += written;
    }
    return true;
}

} // namespace

QString copyFile(const QString &from, const QString &to, const std::atomic<bool> &cancelled)
{
    QFile source(from), target(to);
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return fault(source);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return fault(target);
    QByteArray piece;
    do {
        if (cancelled)
            return QStringLiteral("%1: stopped").arg(to);
        piece = source.read(pieceSize);
        if (!writeAll(target, piece))
            return fault(target);
    } while (!piece.isEmpty());
    if (source.error() != QFile::NoError)
        return fault(source);
    if (!target.setPermissions(source.permissions() | QFile::WriteOwner))
        return fault(target);
    return {};
}

QString linkOrCopy(const QString &from, const QString &to, const std::atomic<bool> &cancelled)
{
    if (link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return {};
    return copyFile(from, to, cancelled);
}

bool haveSameContent(const QString &a, const QString &b, const std::atomic<bool> &cancelled)
{
    QFile first(a), second(b);
    if (!first.open(QIODevice::ReadOnly | QIODevice::Unbuffered)
        || !second.open(QIODevice::ReadOnly | QIODevice::Unbuffered)
        || first.size() != second.size())
        return false;
    QByteArray piece;
    do {
        piece = first.read(pieceSize);
        if (cancelled || piece != second.read(pieceSize))
            return false;
    } while (!piece.isEmpty());
    return first.error() == QFile::NoError && second.error() == QFile::NoError;
}

} // namespace nk::pm::cli

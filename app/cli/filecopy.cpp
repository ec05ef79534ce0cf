// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "filecopy.h"

#include "disk/writeall.h"

#include <QFile>

#include <unistd.h>

namespace nk::pm::cli {
namespace {

constexpr qint64 pieceSize = 1024 * 1024;

QString fault(const QFile &file)
{
    return QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
}

/// Shows \a take, which gives the reason of a failure, all of the file.
template<typename Take>
QString readPieces(QFile &source, const std::atomic<bool> &cancelled, Take take)
{
    if (!source.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return fault(source);
    QByteArray piece;
    do {
        if (cancelled)
            return QStringLiteral("%1: stopped").arg(source.fileName());
        piece = source.read(pieceSize);
        const QString reason = take(piece);
        if (!reason.isEmpty())
            return reason;
    } while (!piece.isEmpty());
    return source.error() == QFile::NoError ? QString() : fault(source);
}

constexpr int hexMd5Length = 32;

} // namespace

ContentCheck::ContentCheck(const QString &digest)
    : m_digest(QByteArray::fromHex(digest.toLatin1()))
    , m_hash(digest.size() == hexMd5Length ? QCryptographicHash::Md5 : QCryptographicHash::Sha224)
{}

void ContentCheck::add(const QByteArray &bytes)
{
    if (isWanted())
        m_hash.addData(bytes);
}

QString copyFile(
    const QString &from, const QString &to, ContentCheck &check, const std::atomic<bool> &cancelled)
{
    QFile source(from), target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return fault(target);
    const QString reason = readPieces(source, cancelled, [&](const QByteArray &piece) {
        check.add(piece);
        return disk::writeAll(target, piece) ? QString() : fault(target);
    });
    if (!reason.isEmpty())
        return reason;
    if (!target.setPermissions(source.permissions() | QFile::WriteOwner))
        return fault(target);
    return {};
}

QString linkOrCopy(
    const QString &from, const QString &to, ContentCheck &check, const std::atomic<bool> &cancelled)
{
    if (link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) == 0)
        return readFile(to, check, cancelled);
    return copyFile(from, to, check, cancelled);
}

QString readFile(const QString &path, ContentCheck &check, const std::atomic<bool> &cancelled)
{
    if (!check.isWanted())
        return {};
    QFile source(path);
    return readPieces(source, cancelled, [&check](const QByteArray &piece) {
        check.add(piece);
        return QString();
    });
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

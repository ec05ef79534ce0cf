// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "disk/savefile.h"

#include "disk/writeall.h"

#include <norvakutil/fileutils.h>

#include <QDateTime>
#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cstdio>

namespace nk::pm::disk {
namespace {

constexpr int longestSave = 300; // seconds

QString stagedName(const QString &name)
{
    return QStringLiteral(".%1.nkpm-").arg(name);
}

void removeLeftovers(const QFileInfo &target)
{
    const QString begin = stagedName(target.fileName());
    static const QRegularExpression digits(QStringLiteral("^[0-9a-f]{8}$"));
    const auto limit = QDateTime::currentDateTime().addSecs(-longestSave);
    const auto entries = target.dir().entryInfoList(QDir::Files | QDir::Hidden | QDir::NoSymLinks);
    for (const QFileInfo &entry : entries) {
        const QString name = entry.fileName();
        if (name.startsWith(begin) && digits.match(name.mid(begin.size())).hasMatch()
            && entry.lastModified() < limit)
            QFile::remove(entry.filePath());
    }
}

/// Gives the reason of a failure, or an empty text.
QString writeWhole(QFile &file, const QByteArray &content, QFile::Permissions permissions)
{
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered)
        || !writeAll(file, content) || (permissions && !file.setPermissions(permissions)))
        return file.errorString();
    return util::FileUtils::syncFile(file.fileName()) ? QString() : qt_error_string();
}

/// The same.
QString replace(const QString &target, const QString &source)
{
    const QByteArray from = QFile::encodeName(source), to = QFile::encodeName(target);
    const bool isReplaced = ::rename(from.constData(), to.constData()) == 0;
    return isReplaced && util::FileUtils::syncFile(target) ? QString() : qt_error_string();
}

} // namespace

QString saveFile(const QString &path, const QByteArray &content)
{
    const QFileInfo named(path);
    const bool isThere = named.exists();
    const QFileInfo target(isThere ? named.canonicalFilePath() : named.absoluteFilePath());
    removeLeftovers(target);
    const quint32 number = QRandomGenerator::system()->generate();
    QFile file(target.dir().filePath(
        stagedName(target.fileName()) + QStringLiteral("%1").arg(number, 8, 16, QChar(u'0'))));
    QString fault =
        writeWhole(file, content, isThere ? target.permissions() : QFile::Permissions());
    if (fault.isEmpty())
        fault = replace(target.filePath(), file.fileName());
    if (fault.isEmpty())
        return {};
    file.remove();
    return QStringLiteral("%1: %2").arg(path, fault);
}

} // namespace nk::pm::disk

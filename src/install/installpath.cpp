// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/installpath.h"

#include <QDir>
#include <QFileInfo>

namespace nk::pm {

namespace {

bool isBelow(const QString &directory, const QString &path)
{
    return path.size() > directory.size() && path.startsWith(directory)
           && (directory.endsWith(QLatin1Char('/'))
               || path.at(directory.size()) == QLatin1Char('/'));
}

bool holdsForbiddenCharacter(const QString &path)
{
#ifdef Q_OS_WIN
    // Drive letters and alternate data streams.
    if (path.contains(QLatin1Char(':')))
        return true;
#endif
    return path.contains(QChar(QChar::Null));
}

} // namespace

QString pathInside(const QString &base, const QString &joined)
{
    if (holdsForbiddenCharacter(joined))
        return QString();
    QString cleaned = QDir::cleanPath(QDir::fromNativeSeparators(joined));
    if (cleaned == base || isBelow(base, cleaned))
        return cleaned;
    if (base != QLatin1String("."))
        return QString();
    const bool leaves = cleaned.isEmpty() || cleaned.startsWith(QLatin1Char('/'))
                        || cleaned == QLatin1String("..")
                        || cleaned.startsWith(QLatin1String("../"));
    return leaves ? QString() : cleaned;
}

QString filePathInside(const QString &base, const QString &fileName)
{
    if (fileName.isEmpty() || QDir::fromNativeSeparators(fileName).startsWith(QLatin1Char('/')))
        return QString();
    const QString path = pathInside(base, base + QLatin1Char('/') + fileName);
    return path == base ? QString() : path;
}

bool linksStayInside(const QString &root, const QString &path)
{
    QString canonicalRoot;
    for (int end = 0; end >= 0 && end < path.size();) {
        end = path.indexOf(QLatin1Char('/'), end + 1);
        const QFileInfo step(root + QLatin1Char('/') + path.leftRef(end));
        if (!step.isSymLink()) {
            if (!step.exists())
                return true;
            continue;
        }
        if (canonicalRoot.isNull())
            canonicalRoot = QFileInfo(root).canonicalFilePath();
        if (!isBelow(canonicalRoot, step.canonicalFilePath()))
            return false;
    }
    return true;
}

} // namespace nk::pm

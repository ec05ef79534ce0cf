// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"

#include "catalogue.h"

#include "index/packageindex.h"

namespace nk::pm::cli {

QString noPackage(const Catalogue &catalogue, const QString &id)
{
    if (catalogue.index()->getKeyword(QStringRef(&id)))
        return QStringLiteral("\"%1\" is a keyword, not a package (nkpm list --keyword %1)")
            .arg(id);
    return QStringLiteral("there is no package \"%1\" (nkpm list shows all)").arg(id);
}

QString noType(const QString &type)
{
    return QStringLiteral("no package is of type \"%1\" (nkpm list shows all)").arg(type);
}

} // namespace nk::pm::cli

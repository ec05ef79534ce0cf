// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "accessorcontents.h"

#include "repository/packageaccessor.h"

#include <QJsonDocument>

namespace nk::pm::test {

QStringList contentsOf(PackageAccessor &accessor)
{
    accessor.load();
    QStringList lines;
    for (int i = 0; i < accessor.packageCount(); ++i) {
        const PackageInfo info = accessor.packageInfo(i);
        const QByteArray manifest = QJsonDocument(accessor.manifest(i)).toJson();
        lines << "package " + info.type + ' ' + info.id + ' ' + QString::fromUtf8(manifest);
    }
    for (int i = 0; i < accessor.keywordCount(); ++i) {
        const KeywordInfo info = accessor.keywordInfo(i);
        QString line = QString("keyword %1 %2").arg(info.id).arg(info.type);
        for (const KeywordString &text : info.strings)
            line += QString(" [%1|%2|%3]").arg(text.language, text.string, text.plural);
        lines << line;
    }
    for (int i = 0; i < accessor.linkCount(); ++i) {
        const LinkInfo info = accessor.linkInfo(i);
        lines << QString("link %1 %2 %3").arg(info.from).arg(info.type).arg(info.to);
    }
    lines.sort();
    return lines;
}

} // namespace nk::pm::test

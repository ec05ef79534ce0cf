// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "manifesttexts.h"

#include "index/packageindexnode.h"
#include "query/manifeststringfield.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QLocale>
#include <QRegularExpression>

namespace nk::pm::app {

QString manifestText(const PackageNode &node, const QString &field)
{
    ManifestStringField reader;
    reader.setName(field);
    return reader.read(&node).toString();
}

QString packageTitle(const PackageNode &node)
{
    const QString name = manifestText(node, QStringLiteral("name"));
    return name.isEmpty() ? node.id().toString() : name;
}

QUrl packagePreview(const PackageNode &node)
{
    const QString name = node.manifestValue(QStringLiteral("preview")).toString();
    return name.isEmpty() ? QUrl() : node.fileUrl(name);
}

QString shownValue(const QJsonValue &value, const QString &text)
{
    switch (value.type()) {
    case QJsonValue::String:
        return text;
    case QJsonValue::Double: {
        QLocale plain;
        plain.setNumberOptions(
            QLocale::OmitGroupSeparator); // most numbers here are years and sizes
        return plain.toString(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    }
    case QJsonValue::Bool:
        return value.toBool() ? QCoreApplication::translate("ManifestTexts", "yes")
                              : QCoreApplication::translate("ManifestTexts", "no");
    case QJsonValue::Array: {
        QStringList parts;
        const auto array = value.toArray();
        for (const QJsonValue &part : array)
            parts.append(shownValue(part, part.toString()));
        return parts.join(QStringLiteral(", "));
    }
    default:
        return QStringLiteral("–");
    }
}

bool isFileName(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^\\w\\S*\\.[A-Za-z]\\w*$"));
    return form.match(text).hasMatch();
}

} // namespace nk::pm::app

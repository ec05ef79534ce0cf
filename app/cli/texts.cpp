// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "texts.h"

#include "index/keywordtypes.h"
#include "index/packageindexnode.h"
#include "query/manifeststringfield.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace nk::pm::cli {

QString fieldText(const PackageNode *node, const QString &field)
{
    const QJsonValue value = node->manifestValue(field);
    if (value.isUndefined())
        return {};
    if (!value.isString()) {
        // QJsonDocument writes arrays and objects only: the value without its brackets.
        const QByteArray array = QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact);
        return QString::fromUtf8(array.mid(1, array.size() - 2));
    }
    ManifestStringField reader;
    reader.setName(field);
    return reader.read(node).toString();
}

QString displayName(const PackageNode *node)
{
    const QString name = fieldText(node, QStringLiteral("name"));
    return name.isEmpty() ? node->id().toString() : name;
}

QString kindText(const KeywordNode *keyword)
{
    switch (KeywordType(keyword->type())) {
    case KeywordType::Noun:
        return QStringLiteral("noun");
    case KeywordType::Name:
        return QStringLiteral("name");
    case KeywordType::Adjective:
        return QStringLiteral("adjective");
    case KeywordType::Literal:
        return QStringLiteral("literal");
    case KeywordType::Category:
        return QStringLiteral("category");
    case KeywordType::Invalid:
        break;
    }
    return QStringLiteral("invalid");
}

QJsonObject keywordObject(const KeywordNode *keyword)
{
    return {
        {QStringLiteral("id"), keyword->id().toString()},
        {QStringLiteral("kind"), kindText(keyword)},
        {QStringLiteral("text"), keyword->displayString().toString()}};
}

} // namespace nk::pm::cli

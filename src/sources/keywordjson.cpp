// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "sources/keywordjson.h"

#include "index/keywordtypes.h"

#include <QJsonArray>

namespace nk::pm {

namespace {

KeywordString nounForm(const QString &language, const QJsonValue &form)
{
    const QJsonObject object = form.toObject();
    return {
        language, object.value(QLatin1String("sg")).toString(),
        object.value(QLatin1String("pl")).toString()};
}

KeywordString plainText(const QString &language, const QJsonValue &text)
{
    return {language, text.toString(), QString()};
}

QVector<KeywordString> localizedStrings(
    const QJsonObject &keyword, KeywordString (*read)(const QString &, const QJsonValue &))
{
    QVector<KeywordString> result;
    const QJsonObject languages = keyword.value(QLatin1String("strings")).toObject();
    for (auto language = languages.begin(); language != languages.end(); ++language) {
        const QJsonArray texts = language.value().toArray();
        for (const QJsonValue &text : texts)
            result.append(read(language.key(), text));
    }
    return result;
}

} // namespace

QVector<KeywordString> keywordStrings(int type, const QJsonObject &keyword)
{
    switch (KeywordType(type)) {
    case KeywordType::Noun:
        return localizedStrings(keyword, nounForm);
    case KeywordType::Name:
    case KeywordType::Adjective:
    case KeywordType::Category:
        return localizedStrings(keyword, plainText);
    case KeywordType::Literal:
        return {plainText(QString(), keyword.value(QLatin1String("string")))};
    case KeywordType::Invalid:
        break;
    }
    return {};
}

} // namespace nk::pm

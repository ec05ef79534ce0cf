// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/recordjson.h"

#include "index/keywordtypes.h"
#include "index/linktypes.h"

#include <QJsonArray>

#include <optional>

namespace nk::pm::publisher {

namespace {

/// Reads the texts of one keyword and says which of them are unusable.
class TextReader
{
public:
    TextReader(KeywordInfo &keyword, const QString &file, Problems &problems)
        : m_keyword(keyword)
        , m_file(file)
        , m_problems(problems)
    {}

    void readLiteral(const QJsonObject &object)
    {
        // No language, as in the local source.
        readText({}, object.value(QLatin1String("string")), QStringLiteral("\"string\""));
    }

    void readLanguages(const QJsonObject &object)
    {
        const QJsonValue strings = object.value(QLatin1String("strings"));
        if (!strings.isObject())
            return complain(QStringLiteral("\"strings\" is no object"));
        const QJsonObject languages = strings.toObject();
        bool hasTexts = false;
        for (auto it = languages.begin(); it != languages.end(); ++it)
            hasTexts = readLanguage(it.key(), it.value()) || hasTexts;
        if (!hasTexts)
            complain(QStringLiteral("has no text in any language"));
    }

private:
    bool readLanguage(const QString &language, const QJsonValue &texts)
    {
        if (language.isEmpty())
            complain(QStringLiteral("a language without a name in \"strings\""));
        if (!texts.isArray())
            complain(QStringLiteral("the texts of \"%1\" are no array").arg(language));
        const QJsonArray elements = texts.toArray();
        for (int i = 0; i < elements.size(); ++i) {
            const QString where = QStringLiteral("text %1 of \"%2\"").arg(i + 1).arg(language);
            if (m_keyword.type == int(KeywordType::Noun))
                readNoun(language, elements.at(i), where);
            else
                readText(language, elements.at(i), where);
        }
        return !elements.isEmpty();
    }

    void readText(const QString &language, const QJsonValue &value, const QString &where)
    {
        const std::optional<QString> string = text(value, where);
        if (string && string->isEmpty())
            complain(where + QStringLiteral(" is empty"));
        m_keyword.strings.append({language, string.value_or(QString()), {}});
    }

    void readNoun(const QString &language, const QJsonValue &value, const QString &where)
    {
        if (!value.isObject())
            return complain(where + QStringLiteral(" is no object with \"sg\" and \"pl\""));
        const QJsonObject form = value.toObject();
        const auto singular = text(form.value(QLatin1String("sg")), where);
        const auto plural = text(form.value(QLatin1String("pl")), where);
        if (singular && singular->isEmpty() && plural && plural->isEmpty())
            complain(where + QStringLiteral(" has neither \"sg\" nor \"pl\""));
        m_keyword.strings.append(
            {language, singular.value_or(QString()), plural.value_or(QString())});
    }

    /// A missing value is an empty text.
    std::optional<QString> text(const QJsonValue &value, const QString &where)
    {
        if (!value.isString() && !value.isUndefined()) {
            complain(where + QStringLiteral(" is no text"));
            return {};
        }
        const QString string = value.toString();
        if (string.contains(QChar::Null)) {
            complain(
                where
                + QStringLiteral(" holds the character U+0000, which separates a word "
                                 "from its plural in a ledger"));
            return {};
        }
        return string;
    }

    void complain(const QString &what) { m_problems.error(m_file, what); }

    KeywordInfo &m_keyword;
    const QString &m_file;
    Problems &m_problems;
};

QString quoted(const QJsonValue &value)
{
    return value.isString() ? u'"' + value.toString() + u'"' : QStringLiteral("without a text");
}

} // namespace

KeywordInfo keywordFromJson(
    const QString &id, const QJsonObject &object, const QString &file, Problems &problems)
{
    KeywordInfo keyword;
    keyword.id = id;
    const QJsonValue type = object.value(QLatin1String("type"));
    keyword.type = int(keywordTypeFromString(type.toString()));
    if (keyword.type == int(KeywordType::Invalid)) {
        problems.error(
            file,
            QStringLiteral("unknown type of keyword %1 (noun, name, adjective, literal, category)")
                .arg(quoted(type)));
        return keyword;
    }
    TextReader reader(keyword, file, problems);
    if (keyword.type == int(KeywordType::Literal))
        reader.readLiteral(object);
    else
        reader.readLanguages(object);
    return keyword;
}

LinkInfo linkFromJson(const QJsonObject &object, const QString &file, Problems &problems)
{
    LinkInfo link;
    link.from = object.value(QLatin1String("from")).toString();
    link.to = object.value(QLatin1String("to")).toString();
    const QJsonValue type = object.value(QLatin1String("type"));
    link.type = linkTypeFromString(type.toString());
    if (link.type == -1)
        problems.error(
            file, QStringLiteral("unknown type of link %1 (is_a, contains, relates_to, is_not_a, "
                                 "is, uses, requires)")
                      .arg(quoted(type)));
    if (link.from.isEmpty())
        problems.error(file, QStringLiteral("\"from\" names nothing"));
    if (link.to.isEmpty())
        problems.error(file, QStringLiteral("\"to\" names nothing"));
    return link;
}

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordnodes.h"

#include "index/indexlogging.h"
#include "index/packageindex.h"
#include "repository/packageaccessor.h"

namespace nk::pm {

namespace {

/// Texts of this language name a keyword in sort keys, whatever the user's language is.
const QLatin1String canonicalLanguage("de");

bool holds(const QStringRef &text, const QStringRef &search)
{
    return text.indexOf(search, 0, Qt::CaseInsensitive) >= 0;
}

bool equals(const QStringRef &text, const QStringRef &search)
{
    return text.compare(search, Qt::CaseInsensitive) == 0;
}

void warnOfNoText(const KeywordInfo &info)
{
    qCWarning(lcPackageIndex) << "Keyword" << info.id << "has empty string list";
}

} // namespace

NounNode::NounNode(const KeywordInfo &info, PackageIndex *index)
    : KeywordNode(index, info.id)
{
    for (const KeywordString &form : info.strings) {
        if (form.language == index->activeLanguage()) {
            const QStringRef singular = index->addString(form.string);
            m_strings.append({singular, index->addString(form.plural)});
        }
        if (m_canonicalString.isEmpty() && form.language == canonicalLanguage)
            m_canonicalString = index->addString(form.string.isEmpty() ? form.plural : form.string);
    }
    if (m_strings.isEmpty()) {
        warnOfNoText(info);
        m_strings.append({QStringRef(), QStringRef()});
    }
}

QStringRef NounNode::displayString() const
{
    const auto &form = m_strings.first();
    return form.first.isEmpty() ? form.second : form.first;
}

QVector<QStringRef> NounNode::matchingStrings(const QStringRef &search) const
{
    QVector<QStringRef> matches;
    for (const auto &[singular, plural] : m_strings) {
        if (holds(singular, search))
            matches.append(singular);
        else if (holds(plural, search))
            matches.append(plural);
    }
    return matches;
}

int NounNode::matchLevel(const QStringRef &search) const
{
    for (const auto &[singular, plural] : m_strings) {
        if (equals(singular, search) || equals(plural, search))
            return 2;
        if (holds(singular, search) || holds(plural, search))
            return 1;
    }
    return 0;
}

TextsNode::TextsNode(const KeywordInfo &info, PackageIndex *index)
    : KeywordNode(index, info.id)
{
    for (const KeywordString &text : info.strings) {
        if (text.language == index->activeLanguage())
            m_strings.append(index->addString(text.string));
        if (m_canonicalString.isEmpty() && text.language == canonicalLanguage)
            m_canonicalString = index->addString(text.string);
    }
    if (m_strings.isEmpty()) {
        warnOfNoText(info);
        m_strings.append(QStringRef());
    }
}

QVector<QStringRef> TextsNode::matchingStrings(const QStringRef &search) const
{
    QVector<QStringRef> matches;
    for (const QStringRef &text : m_strings) {
        if (holds(text, search))
            matches.append(text);
    }
    return matches;
}

int TextsNode::matchLevel(const QStringRef &search) const
{
    for (const QStringRef &text : m_strings) {
        if (equals(text, search))
            return 2;
        if (holds(text, search))
            return 1;
    }
    return 0;
}

LiteralNode::LiteralNode(const KeywordInfo &info, PackageIndex *index)
    : KeywordNode(index, info.id)
{
    if (info.strings.isEmpty()) {
        qCWarning(lcPackageIndex) << "Keyword" << info.id << "has empty string";
        return;
    }
    m_literal = index->addString(info.strings.first().string);
    m_canonicalString = index->addString(info.strings.first().string);
}

QVector<QStringRef> LiteralNode::matchingStrings(const QStringRef &search) const
{
    if (!holds(m_literal, search))
        return {};
    return {m_literal};
}

int LiteralNode::matchLevel(const QStringRef &search) const
{
    if (equals(m_literal, search))
        return 2;
    return holds(m_literal, search) ? 1 : 0;
}

} // namespace nk::pm

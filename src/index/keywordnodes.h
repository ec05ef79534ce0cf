// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "index/keywordtypes.h"
#include "index/packageindexnode.h"

#include <QPair>
#include <QStringRef>
#include <QVector>

namespace nk::pm {

struct KeywordInfo;

/// A common noun: pairs of singular and plural in the active language.
class NounNode final : public KeywordNode
{
public:
    NounNode(const KeywordInfo &info, PackageIndex *index);

    int type() const override { return int(KeywordType::Noun); }
    QStringRef displayString() const override;
    QStringRef canonicalString() const override { return m_canonicalString; }
    QVector<QStringRef> matchingStrings(const QStringRef &search) const override;
    int matchLevel(const QStringRef &search) const override;

private:
    QVector<QPair<QStringRef, QStringRef>> m_strings; // never empty; may hold one null pair
};

/// What names, adjectives and categories share: a list of texts in the active language.
class TextsNode : public KeywordNode
{
public:
    QStringRef displayString() const override { return m_strings.first(); }
    QStringRef canonicalString() const override { return m_canonicalString; }
    QVector<QStringRef> matchingStrings(const QStringRef &search) const override;
    int matchLevel(const QStringRef &search) const override;

protected:
    TextsNode(const KeywordInfo &info, PackageIndex *index);

private:
    QVector<QStringRef> m_strings; // never empty; may hold one null text
};

/// A proper name.
class NameNode final : public TextsNode
{
public:
    NameNode(const KeywordInfo &info, PackageIndex *index)
        : TextsNode(info, index)
    {}
    int type() const override { return int(KeywordType::Name); }
};

/// A property.
class AdjectiveNode final : public TextsNode
{
public:
    AdjectiveNode(const KeywordInfo &info, PackageIndex *index)
        : TextsNode(info, index)
    {}
    int type() const override { return int(KeywordType::Adjective); }
};

/// An entry of a category list.
class CategoryNode final : public TextsNode
{
public:
    CategoryNode(const KeywordInfo &info, PackageIndex *index)
        : TextsNode(info, index)
    {}
    int type() const override { return int(KeywordType::Category); }
    bool isCategory() const override { return true; }
};

/// A text that is the same in all languages.
class LiteralNode final : public KeywordNode
{
public:
    LiteralNode(const KeywordInfo &info, PackageIndex *index);

    int type() const override { return int(KeywordType::Literal); }
    QStringRef displayString() const override { return m_literal; }
    QStringRef canonicalString() const override { return m_canonicalString; }
    QVector<QStringRef> matchingStrings(const QStringRef &search) const override;
    int matchLevel(const QStringRef &search) const override;

private:
    QStringRef m_literal;
};

} // namespace nk::pm

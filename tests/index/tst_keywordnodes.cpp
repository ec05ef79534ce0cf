// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordnodes.h"

#include "index/packageindex.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/memorysource.h"
#include "support/scopeddatalocation.h"

#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

using Strings = QVector<KeywordString>;
Q_DECLARE_METATYPE(Strings)
Q_DECLARE_METATYPE(nk::pm::KeywordType)

namespace {

/// The one keyword "k" of an index whose active language is English.
class OneKeyword
{
public:
    OneKeyword(KeywordType type, const Strings &strings)
        : m_index(buildIndex(MemoryCatalogue().keyword("k", type, strings)))
    {}
    const KeywordNode *operator->() const { return keywordOf(m_index, "k"); }

private:
    const QSharedPointer<PackageIndex> m_index;
};

QStringList texts(const QVector<QStringRef> &references)
{
    QStringList texts;
    for (const QStringRef &reference : references)
        texts.append(reference.toString());
    return texts;
}

} // namespace

class TestKeywordNodes : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesItself_data();
    void namesItself();
    void matches_data();
    void matches();
    void tellsItsKind();
    void warnsOfMissingText();

private:
    ScopedDataLocation m_data;
};

void TestKeywordNodes::namesItself_data()
{
    using T = KeywordType;
    Columns<KeywordType, Strings, QString, QString>("type", "strings", "display", "canonical")
        .row(
            "noun shows its singular", T::Noun,
            {{"de", "Stuhl", "St\u00fchle"}, {"en", "chair", "chairs"}}, "chair", "Stuhl")
        .row(
            "noun without singular shows its plural", T::Noun,
            {{"de", "", "Leute"}, {"en", "", "people"}}, "people", "Leute")
        .row("first of two forms", T::Noun, {{"en", "a", "as"}, {"en", "b", "bs"}}, "a", "")
        .row("first of two texts", T::Name, {{"en", "first"}, {"en", "second"}}, "first", "")
        .row(
            "first German text is canonical", T::Adjective,
            {{"de", "rot"}, {"de", "r\u00f6tlich"}, {"en", "red"}}, "red", "rot")
        .row(
            "first German text that isn't empty", T::Category,
            {{"de", ""}, {"de", "zwei"}, {"en", "two"}}, "two", "zwei")
        .row(
            "other languages don't count", T::Name, {{"fr", "trois"}, {"en", "three"}}, "three", "")
        .row("empty text in the active language", T::Name, {{"en", ""}, {"en", "later"}}, "", "")
        .row(
            "literal takes its first text, of any language", T::Literal,
            {{"fr", "100 %1"}, {"en", "other"}}, "100 %1", "100 %1");
}

void TestKeywordNodes::namesItself()
{
    QFETCH(KeywordType, type);
    QFETCH(Strings, strings);
    const OneKeyword keyword(type, strings);
    QTEST(keyword->displayString().toString(), "display");
    QTEST(keyword->canonicalString().toString(), "canonical");
}

void TestKeywordNodes::matches_data()
{
    using T = KeywordType;
    const Strings noun{{"en", "Chair", "Chairs"}, {"en", "Seat", "Seating"}};
    const Strings names{{"en", "Windsor chair"}, {"en", "Windsor"}};
    const Strings literal{{"", "Oak"}};
    Columns<KeywordType, Strings, QString, int, QStringList>(
        "type", "strings", "search", "level", "matching")
        .row("noun, singular", T::Noun, noun, "chair", 2, {"Chair"})
        .row("noun, plural", T::Noun, noun, "CHAIRS", 2, {"Chairs"})
        .row("noun, part of both forms", T::Noun, noun, "a", 1, {"Chair", "Seat"})
        .row("noun, second pair", T::Noun, noun, "seating", 2, {"Seating"})
        .row("noun, none", T::Noun, noun, "table", 0, {})
        .row(
            "part of the first text hides the second", T::Name, names, "windsor", 1,
            {"Windsor chair", "Windsor"})
        .row("whole text", T::Adjective, {{"en", "R\u00f6d"}}, "r\u00d6D", 2, {"R\u00f6d"})
        .row("literal, whole", T::Literal, literal, "oak", 2, {"Oak"})
        .row("literal, part", T::Literal, literal, "a", 1, {"Oak"})
        .row("literal, none", T::Literal, literal, "oaks", 0, {})
        .row("empty search in a text", T::Name, {{"en", "a"}}, "", 1, {"a"})
        .row("empty search in an empty text", T::Name, {{"en", ""}}, "", 2, {""})
        .row("empty search in no text", T::Category, {{"de", "a"}}, "", 2, {""})
        .row(
            "texts of other languages", T::Name, {{"de", "Stuhl"}, {"en", "chair"}}, "Stuhl", 0,
            {});
}

void TestKeywordNodes::matches()
{
    QFETCH(KeywordType, type);
    QFETCH(Strings, strings);
    QFETCH(QString, search);
    const OneKeyword keyword(type, strings);
    QTEST(keyword->matchLevel(&search), "level");
    QTEST(texts(keyword->matchingStrings(&search)), "matching");
}

/// The numbers are part of every source's data.
void TestKeywordNodes::tellsItsKind()
{
    int number = 0;
    for (const QString name : {"noun", "name", "adjective", "literal", "category"}) {
        const KeywordType type = keywordTypeFromString(name);
        QCOMPARE(int(type), number++);
        QCOMPARE(keywordTypeFromString(name.toUpper()), KeywordType::Invalid);
        const OneKeyword keyword(type, {{"en", "text"}});
        QCOMPARE(keyword->type(), int(type));
        QCOMPARE(keyword->isCategory(), name == "category");
    }
}

void TestKeywordNodes::warnsOfMissingText()
{
    LogRecorder log("norvak.package.index");
    using T = KeywordType;
    for (const KeywordType type : {T::Noun, T::Name, T::Adjective, T::Category}) {
        log.clear();
        const OneKeyword keyword(type, {{"de", "Stuhl"}});
        QVERIFY(keyword->displayString().isNull());
        QCOMPARE(keyword->canonicalString().toString(), QString("Stuhl"));
        QCOMPARE(log.lines("warning"), QStringList("Keyword \"k\" has empty string list"));
    }
    log.clear();
    PackageIndex index;
    const LiteralNode literal({"k", int(T::Literal), {}}, &index);
    QVERIFY(literal.displayString().isNull());
    QCOMPARE(log.lines(), QStringList("warning: Keyword \"k\" has empty string"));
}

QTEST_GUILESS_MAIN(TestKeywordNodes)

#include "tst_keywordnodes.moc"

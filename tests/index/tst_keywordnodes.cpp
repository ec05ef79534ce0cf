// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/keywordnodes.h"

#include "index/packageindex.h"
#include "repository/packageaccessor.h"
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
    const KeywordNode *operator->() const
    {
        const QString id = "k";
        return m_index->getKeyword(&id);
    }

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
    void tellsItsKind_data();
    void tellsItsKind();
    void warnsOfMissingText_data();
    void warnsOfMissingText();
    void literalWithoutTextWarns();

private:
    ScopedDataLocation m_data;
};

void TestKeywordNodes::namesItself_data()
{
    QTest::addColumn<KeywordType>("type");
    QTest::addColumn<Strings>("strings");
    QTest::addColumn<QString>("display");
    QTest::addColumn<QString>("canonical");

    QTest::newRow("noun shows its singular")
        << KeywordType::Noun << Strings{{"de", "Stuhl", "St\u00fchle"}, {"en", "chair", "chairs"}}
        << "chair"
        << "Stuhl";
    QTest::newRow("noun without singular shows its plural")
        << KeywordType::Noun << Strings{{"de", "", "Leute"}, {"en", "", "people"}} << "people"
        << "Leute";
    QTest::newRow("first of two forms")
        << KeywordType::Noun << Strings{{"en", "a", "as"}, {"en", "b", "bs"}} << "a"
        << "";
    QTest::newRow("first of two texts")
        << KeywordType::Name << Strings{{"en", "first", ""}, {"en", "second", ""}} << "first"
        << "";
    QTest::newRow("first German text is canonical")
        << KeywordType::Adjective
        << Strings{{"de", "rot", ""}, {"de", "r\u00f6tlich", ""}, {"en", "red", ""}} << "red"
        << "rot";
    QTest::newRow("first German text that isn't empty")
        << KeywordType::Category << Strings{{"de", "", ""}, {"de", "zwei", ""}, {"en", "two", ""}}
        << "two"
        << "zwei";
    QTest::newRow("other languages don't count")
        << KeywordType::Name << Strings{{"fr", "trois", ""}, {"en", "three", ""}} << "three"
        << "";
    QTest::newRow("empty text in the active language")
        << KeywordType::Name << Strings{{"en", "", ""}, {"en", "later", ""}} << ""
        << "";
    QTest::newRow("literal takes its first text, of any language")
        << KeywordType::Literal << Strings{{"fr", "100 %1", ""}, {"en", "other", ""}} << "100 %1"
        << "100 %1";
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
    QTest::addColumn<KeywordType>("type");
    QTest::addColumn<Strings>("strings");
    QTest::addColumn<QString>("search");
    QTest::addColumn<int>("level");
    QTest::addColumn<QStringList>("matching");

    const Strings noun{{"en", "Chair", "Chairs"}, {"en", "Seat", "Seating"}};
    QTest::newRow("noun, singular")
        << KeywordType::Noun << noun << "chair" << 2 << QStringList{"Chair"};
    QTest::newRow("noun, plural") << KeywordType::Noun << noun << "CHAIRS" << 2
                                  << QStringList{"Chairs"};
    QTest::newRow("noun, part of both forms")
        << KeywordType::Noun << noun << "a" << 1 << QStringList{"Chair", "Seat"};
    QTest::newRow("noun, second pair")
        << KeywordType::Noun << noun << "seating" << 2 << QStringList{"Seating"};
    QTest::newRow("noun, none") << KeywordType::Noun << noun << "table" << 0 << QStringList{};
    const Strings names{{"en", "Windsor chair", ""}, {"en", "Windsor", ""}};
    QTest::newRow("part of the first text hides the second")
        << KeywordType::Name << names << "windsor" << 1 << QStringList{"Windsor chair", "Windsor"};
    QTest::newRow("whole text") << KeywordType::Adjective << Strings{{"en", "R\u00f6d", ""}}
                                << "r\u00d6D" << 2 << QStringList{"R\u00f6d"};
    QTest::newRow("literal, whole")
        << KeywordType::Literal << Strings{{"", "Oak", ""}} << "oak" << 2 << QStringList{"Oak"};
    QTest::newRow("literal, part")
        << KeywordType::Literal << Strings{{"", "Oak", ""}} << "a" << 1 << QStringList{"Oak"};
    QTest::newRow("literal, none")
        << KeywordType::Literal << Strings{{"", "Oak", ""}} << "oaks" << 0 << QStringList{};
    QTest::newRow("empty search in a text")
        << KeywordType::Name << Strings{{"en", "a", ""}} << "" << 1 << QStringList{"a"};
    QTest::newRow("empty search in an empty text")
        << KeywordType::Name << Strings{{"en", "", ""}} << "" << 2 << QStringList{""};
    QTest::newRow("empty search in no text")
        << KeywordType::Category << Strings{{"de", "a", ""}} << "" << 2 << QStringList{""};
    QTest::newRow("texts of other languages")
        << KeywordType::Name << Strings{{"de", "Stuhl", ""}, {"en", "chair", ""}} << "Stuhl" << 0
        << QStringList{};
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

void TestKeywordNodes::tellsItsKind_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("number");
    QTest::newRow("noun") << "noun" << 0;
    QTest::newRow("name") << "name" << 1;
    QTest::newRow("adjective") << "adjective" << 2;
    QTest::newRow("literal") << "literal" << 3;
    QTest::newRow("category") << "category" << 4;
}

void TestKeywordNodes::tellsItsKind()
{
    QFETCH(QString, name);
    QFETCH(int, number);
    const KeywordType type = keywordTypeFromString(name);
    QCOMPARE(int(type), number);
    QCOMPARE(keywordTypeFromString(name.toUpper()), KeywordType::Invalid);
    const OneKeyword keyword(type, {{"en", "text", ""}});
    QCOMPARE(keyword->type(), number);
    QCOMPARE(keyword->isCategory(), name == "category");
    QCOMPARE(keyword->kind(), PackageIndexNode::Keyword);
}

void TestKeywordNodes::warnsOfMissingText_data()
{
    QTest::addColumn<KeywordType>("type");
    QTest::newRow("noun") << KeywordType::Noun;
    QTest::newRow("name") << KeywordType::Name;
    QTest::newRow("adjective") << KeywordType::Adjective;
    QTest::newRow("category") << KeywordType::Category;
}

void TestKeywordNodes::warnsOfMissingText()
{
    QFETCH(KeywordType, type);
    LogRecorder log("norvak.package.index");
    const OneKeyword keyword(type, {{"de", "Stuhl", ""}});
    QVERIFY(keyword->displayString().isNull());
    QCOMPARE(keyword->canonicalString().toString(), QString("Stuhl"));
    QCOMPARE(log.lines("warning"), QStringList("Keyword \"k\" has empty string list"));
}

void TestKeywordNodes::literalWithoutTextWarns()
{
    PackageIndex index;
    LogRecorder log("norvak.package.index");
    const LiteralNode literal({"k", int(KeywordType::Literal), {}}, &index);
    QVERIFY(literal.displayString().isNull());
    QCOMPARE(log.lines(), QStringList("warning: Keyword \"k\" has empty string"));
}

QTEST_GUILESS_MAIN(TestKeywordNodes)

#include "tst_keywordnodes.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguechecks.h"
#include "catalogue/cataloguereader.h"
#include "catalogue/linkcycles.h"
#include "catalogue/strictjson.h"
#include "cataloguetree.h"

#include <QTest>

#include <functional>

#include <unistd.h>

using namespace nk::pm;
using namespace nk::pm::publisher;
using nk::pm::test::CatalogueTree;

using Change = std::function<void(CatalogueTree &)>;
Q_DECLARE_METATYPE(Change)

class tst_Catalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsSoundTree();
    void emptyPackagesIsAnEmptyCatalogue();
    void namesFault_data();
    void namesFault();
    void toleratesWithWarning_data();
    void toleratesWithWarning();
    void namesAllFaultsInOneRun();
    void cyclesOfDenseGraphs();
    void strictJson_data();
    void strictJson();
};

static Problems problemsOf(const CatalogueTree &tree)
{
    Problems problems;
    Progress progress;
    checkCatalogue(readCatalogue(tree.path(), problems, progress), problems);
    return problems;
}

static QStringList lines(const Problems &problems)
{
    QStringList list;
    for (const Problem &problem : problems.sorted())
        list.append(
            problem.file + (problem.severity == Problem::Error ? ": error: " : ": warning: ")
            + problem.text);
    return list;
}

void tst_Catalogue::readsSoundTree()
{
    CatalogueTree tree;
    tree.fillWithGoods();
    Problems problems;
    Progress progress;
    const Catalogue catalogue = readCatalogue(tree.path(), problems, progress);
    checkCatalogue(catalogue, problems);
    QCOMPARE(lines(problems), QStringList());

    QCOMPARE(catalogue.packages.size(), 3);
    QCOMPARE(catalogue.packages[0].id, "loose");
    QCOMPARE(catalogue.packages[0].type, "");
    QVERIFY(catalogue.packages[0].files.isEmpty());
    QCOMPARE(catalogue.packages[2].id, "stool");
    QCOMPARE(catalogue.packages[2].type, "furniture:chairs");
    QCOMPARE(
        catalogue.packages[2].manifest,
        QByteArray(R"({"size":[0.4,0.45],"title":"Stool","type":"own"})"));
    QCOMPARE(catalogue.packages[2].files.size(), 2);
    QCOMPARE(catalogue.packages[2].files[0].name, "preview.svg");

    QCOMPARE(catalogue.keywords.size(), 5);
    const KeywordInfo chair = catalogue.keywords[0].info;
    QCOMPARE(chair.strings.size(), 4);
    QCOMPARE(chair.strings[0].language, "de");
    QCOMPARE(chair.strings[1].plural, QString("Sitzmöbel"));
    QCOMPARE(catalogue.keywords[3].info.strings[0].language, "");
    QCOMPARE(catalogue.keywords[3].info.strings[0].string, "SKU-4711");

    QCOMPARE(catalogue.links.size(), 4);
    QCOMPARE(catalogue.links[0].file, "links/chair-is-wooden.json");
    QCOMPARE(catalogue.links[0].info.type, int(Is));
}

void tst_Catalogue::emptyPackagesIsAnEmptyCatalogue()
{
    const CatalogueTree tree;
    QCOMPARE(lines(problemsOf(tree)), QStringList());
}

void tst_Catalogue::namesFault_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &expected, const Change &change) {
        QTest::newRow(name) << change << expected;
    };

    row("no catalogue", "neither of the directories", [](CatalogueTree &tree) {
        tree.remove("");
        QDir().mkpath(tree.path());
    });
    row("nothing", "there is no directory", [](CatalogueTree &tree) { tree.remove(""); });
    row("link to nothing", "links/l.json: error: links to \"table\", which is neither",
        [](CatalogueTree &tree) { tree.link("l", "stool", "is_a", "table"); });
    row("link from nothing", "links/l.json: error: links to \"table\", which is neither",
        [](CatalogueTree &tree) { tree.link("l", "table", "is_a", "stool"); });
    row("link without an end", "links/l.json: error: \"to\" names nothing",
        [](CatalogueTree &tree) { tree.link("l", "stool", "is_a", ""); });
    row("link of unknown type", "links/l.json: error: unknown type of link \"IS_A\"",
        [](CatalogueTree &tree) { tree.link("l", "stool", "IS_A", "chair"); });
    row("keyword of unknown type", "dictionary/k.json: error: unknown type of keyword \"Noun\"",
        [](CatalogueTree &tree) { tree.file("dictionary/k.json", R"({"type":"Noun"})"); });
    row("keyword without type", "dictionary/k.json: error: unknown type of keyword without a text",
        [](CatalogueTree &tree) { tree.file("dictionary/k.json", R"({"type":3})"); });
    row("keyword without texts", "dictionary/k.json: error: has no text in any language",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"name","strings":{"de":[]}})");
        });
    row("texts in the wrong place", "dictionary/k.json: error: \"strings\" is no object",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"name","string":"k"})");
        });
    row("text that is none", "dictionary/k.json: error: text 2 of \"de\" is no text",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"name","strings":{"de":["k",7]}})");
        });
    row("noun form that is a string", "dictionary/k.json: error: text 1 of \"de\" is no object",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"noun","strings":{"de":["k"]}})");
        });
    row("noun form without text", "dictionary/k.json: error: text 1 of \"de\" has neither",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"noun","strings":{"de":[{"Sg":"k"}]}})");
        });
    row("literal without text", "dictionary/k.json: error: \"string\" is empty",
        [](CatalogueTree &tree) { tree.file("dictionary/k.json", R"({"type":"literal"})"); });
    row("the ledger's separator in a text", "dictionary/k.json: error: \"string\" holds the",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.json", R"({"type":"literal","string":"a\u0000b"})");
        });
    row("too many texts", "dictionary/k.json: error: 256 texts of \"de\", a ledger holds 255",
        [](CatalogueTree &tree) {
            const QString texts = QStringList(QVector<QString>(256, "\"k\"").toList()).join(',');
            tree.file(
                "dictionary/k.json",
                QString(R"({"type":"name","strings":{"de":[%1]}})").arg(texts).toUtf8());
        });
    row("text too long", "dictionary/k.json: error: a text of \"de\" has 65537 bytes",
        [](CatalogueTree &tree) {
            // One byte less than the limit each, but the plural and the separator count too.
            const QByteArray half(32768, 'x');
            tree.file(
                "dictionary/k.json", R"({"type":"noun","strings":{"de":[{"sg":")" + half
                                         + R"(","pl":")" + half + R"("}]}})");
        });
    row("keyword file with two dots", "dictionary/k.de.json: error: readers look for \"k.json\"",
        [](CatalogueTree &tree) {
            tree.file("dictionary/k.de.json", R"({"type":"literal","string":"k"})");
        });
    row("one identifier for two packages",
        "packages/other/stool/manifest.json: error: the identifier \"stool\" is taken already by "
        "packages/furniture/chairs/stool/manifest.json",
        [](CatalogueTree &tree) { tree.package("other/stool"); });
    row("one identifier for package and keyword",
        "dictionary/stool.json: error: the identifier \"stool\" is taken already",
        [](CatalogueTree &tree) { tree.keyword("stool"); });
    row("package requiring itself", "links/l.json: error: \"oak\" requires itself: oak -> oak",
        [](CatalogueTree &tree) { tree.link("l", "oak", "requires", "oak"); });
    row("cycle of requirements",
        "links/stool-needs-oak.json: error: \"oak\" requires itself: oak -> loose -> stool -> oak",
        [](CatalogueTree &tree) {
            tree.link("a", "oak", "requires", "loose");
            tree.link("b", "loose", "requires", "stool");
        });
    row("manifest that is no JSON",
        "packages/p/manifest.json: error: not valid JSON: parse error at line 2, column 1",
        [](CatalogueTree &tree) { tree.package("p", "{\n"); });
    row("manifest that is an array", "packages/p/manifest.json: error: not a JSON object",
        [](CatalogueTree &tree) { tree.package("p", "[1]"); });
    row("manifest with a key twice", "packages/p/manifest.json: error: the key \"ab\" appears",
        [](CatalogueTree &tree) { tree.package("p", R"({"x":{"ab":1,"\u0061b":2}})"); });
    row("manifest above 1 MiB", "packages/p/manifest.json: error: is larger than 1 MiB",
        [](CatalogueTree &tree) { tree.package("p", "{" + QByteArray(0x100000, ' ') + "}"); });
    row("manifest above a ledger's String",
        "packages/p/manifest.json: error: the manifest, without white space, has 65536 bytes",
        [](CatalogueTree &tree) {
            tree.package("p", "{ \"k\": \"" + QByteArray(65536 - 8, 'x') + "\" }");
        });
    row("manifest that can't be read", "packages/p/manifest.json: error: can't be read",
        [](CatalogueTree &tree) { tree.directory("packages/p/manifest.json/x"); });
    row("type with a colon", "packages/a:b: error: the name of a type can't hold",
        [](CatalogueTree &tree) { tree.package("a:b/p"); });
    row("dead symbolic link", "packages/p/gone.png: error: links to something that doesn't exist",
        [](CatalogueTree &tree) {
            tree.package("p");
            QFile::link("nowhere", tree.path() + "/packages/p/gone.png");
        });
    row("name that isn't UTF-8", "packages/p/\uFFFD.png: error: the name isn't valid UTF-8",
        [](CatalogueTree &tree) {
            tree.package("p");
            tree.file("packages/p/right.png", "png");
            const QByteArray package = tree.path().toUtf8() + "/packages/p/";
            QCOMPARE(::rename(package + "right.png", package + "\xff.png"), 0);
        });
    row("directories in a circle", "packages/a/b/back: error: links to a directory above itself",
        [](CatalogueTree &tree) {
            tree.directory("packages/a/b");
            QFile::link(tree.path() + "/packages/a", tree.path() + "/packages/a/b/back");
        });
}

void tst_Catalogue::namesFault()
{
    QFETCH(Change, change);
    QFETCH(QString, expected);
    CatalogueTree tree;
    tree.fillWithGoods();
    change(tree);
    const Problems problems = problemsOf(tree);
    QCOMPARE(problems.errorCount(), 1);
    QVERIFY2(lines(problems).join('\n').contains(expected), qPrintable(lines(problems).join('\n')));
}

void tst_Catalogue::toleratesWithWarning_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QString &expected, const Change &change) {
        QTest::newRow(name) << change << expected;
    };

    row("directory inside a package", "packages/loose/sub: warning: a directory inside",
        [](CatalogueTree &tree) { tree.file("packages/loose/sub/a.png", "png"); });
    row("forgotten manifest", "packages/p: warning: holds files but no manifest.json",
        [](CatalogueTree &tree) { tree.file("packages/p/a.png", "png"); });
    row("blank in a file name", "packages/loose/a b.png: warning: the name needs percent-encoding",
        [](CatalogueTree &tree) { tree.file("packages/loose/a b.png", "png"); });
    row("umlaut in an identifier", "packages/tür: warning: the identifier needs percent-encoding",
        [](CatalogueTree &tree) { tree.package("tür"); });
    row("colon in an identifier", "packages/a:b: warning: the identifier needs percent-encoding",
        [](CatalogueTree &tree) { tree.package("a:b"); });
    row("names that differ in case only", "packages/loose/a.png: warning: differs from",
        [](CatalogueTree &tree) {
            tree.file("packages/loose/A.png", "one");
            tree.file("packages/loose/a.png", "other");
        });
    row("link stated twice", "links/x.json: warning: says the same as links/stool-is-chair.json",
        [](CatalogueTree &tree) { tree.link("x", "stool", "is_a", "chair"); });
    row("keyword that is a kind of itself",
        "links/x.json: warning: \"chair\" is a kind of itself: chair -> chair",
        [](CatalogueTree &tree) { tree.link("x", "chair", "is_a", "chair"); });
}

void tst_Catalogue::toleratesWithWarning()
{
    QFETCH(Change, change);
    QFETCH(QString, expected);
    CatalogueTree tree;
    tree.fillWithGoods();
    change(tree);
    const QStringList found = lines(problemsOf(tree));
    QCOMPARE(found.size(), 1);
    QVERIFY2(found.first().startsWith(expected), qPrintable(found.first()));
}

void tst_Catalogue::namesAllFaultsInOneRun()
{
    CatalogueTree tree;
    tree.package("p", "no JSON");
    tree.file("dictionary/k.json", "{}");
    tree.link("l1", "p", "needs", "k");
    tree.link("l2", "p", "is", "q");
    QStringList files;
    for (const Problem &problem : problemsOf(tree).sorted())
        files.append(problem.file);
    const QStringList expected{
        "dictionary/k.json", "links/l1.json", "links/l2.json", "packages/p/manifest.json"};
    QCOMPARE(files, expected);
}

void tst_Catalogue::cyclesOfDenseGraphs()
{
    QVector<CatalogueLink> links;
    // A ladder with 2^40 ways down and none back, and a chain as long as a catalogue.
    for (int i = 0; i < 40; ++i) {
        const QString from = QString("l%1").arg(i);
        const QString to = QString("l%1").arg(i + 1);
        links.append({from + "a", {Requires, from, to + "x"}});
        links.append({from + "b", {Requires, from, to + "y"}});
        links.append({from + "c", {Requires, to + "x", to}});
        links.append({from + "d", {Requires, to + "y", to}});
    }
    for (int i = 0; i < 50000; ++i)
        links.append({"chain", {Requires, QString("c%1").arg(i), QString("c%1").arg(i + 1)}});
    QVERIFY(findCycles(links, Requires).isEmpty());

    links.append({"back", {Requires, "l40", "l38"}});
    const QVector<LinkCycle> cycles = findCycles(links, Requires);
    QCOMPARE(cycles.size(), 1);
    QCOMPARE(cycles[0].file, "back");
    QCOMPARE(cycles[0].identifiers, QStringList({"l38", "l39x", "l39", "l40x", "l40", "l38"}));
    QVERIFY(findCycles(links, Uses).isEmpty());
}

void tst_Catalogue::strictJson_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("canonical");
    QTest::addColumn<QString>("fault");
    const auto good = [](const char *name, const char *text, const char *canonical) {
        QTest::newRow(name) << QByteArray(text) << QByteArray(canonical) << QString();
    };
    good("empty object", " { }\r\n", "{}");
    good("sorted keys", R"({"b":1,"a":[true,null]})", R"({"a":[true,null],"b":1})");
    good("one key in two objects", R"({"a":{"k":1},"b":{"k":1}})", R"({"a":{"k":1},"b":{"k":1}})");
    good("surrogate pair", R"({"a":"\ud83d\ude00"})", "{\"a\":\"\xf0\x9f\x98\x80\"}");
    good("largest exact integer", R"({"a":-9007199254740991})", R"({"a":-9007199254740991})");
    good("large float", R"({"a":1.0e300})", R"({"a":1e+300})");
    good("zero below nothing", R"({"a":-0.0})", R"({"a":0})");

    const auto bad = [](const char *name, const QByteArray &text, const char *fault) {
        QTest::newRow(name) << text << QByteArray() << QString(fault);
    };
    bad("nothing", "", "parse error");
    bad("comment", "{/**/}", "parse error");
    bad("trailing comma", R"({"a":1,})", "parse error");
    bad("text behind the object", "{}{}", "parse error");
    bad("key twice", R"({"a":1,"a":1})", "appears twice");
    bad("key twice, escaped", R"({"\u00fc":1,"ü":1})", "appears twice");
    bad("high surrogate alone", R"({"a":"\ud83d"})", "surrogate");
    bad("low surrogate alone", R"({"a":"\ude00"})", "surrogate");
    bad("lone surrogate in a key", R"({"\ud83dx":1})", "surrogate");
    bad("surrogate in UTF-8", "{\"a\":\"\xed\xa0\x80\"}", "ill-formed UTF-8");
    bad("overlong UTF-8", "{\"a\":\"\xc0\x80\"}", "ill-formed UTF-8");
    bad("number above the double range", R"({"a":1e400})", "number overflow");
    bad("number below the double range", R"({"a":[-1e400]})", "number overflow");
    bad("not a number", R"({"a":NaN})", "parse error");
    bad("integer that a double rounds", R"({"a":9007199254740993})", "more digits");
    bad("negative integer that a double rounds", R"({"a":-9007199254740993})", "more digits");
    bad("integer of thirty digits", R"({"a":123456789012345678901234567890})", "more digits");
    bad("a string", R"("a")", "not a JSON object");
    bad("array without end", QByteArray(200000, '['), "parse error");
    bad("deep nesting", "{\"a\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}", "deep");
}

void tst_Catalogue::strictJson()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, canonical);
    QFETCH(QString, fault);
    const StrictJson json = readStrictJson(text);
    QVERIFY2(
        fault.isEmpty() ? json.fault.isEmpty() : json.fault.contains(fault),
        qPrintable(json.fault));
    QCOMPARE(json.canonical, canonical);
}

QTEST_GUILESS_MAIN(tst_Catalogue)
#include "tst_catalogue.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/cataloguechecks.h"
#include "catalogue/cataloguereader.h"
#include "catalogue/linkcycles.h"
#include "catalogue/strictjson.h"
#include "cataloguetree.h"
#include "support/columns.h"
#include "support/testfiles.h"

#include <QTest>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

using namespace nk::pm;
using namespace nk::pm::publisher;
using namespace nk::pm::test;

using Change = std::function<void(CatalogueTree &)>;
Q_DECLARE_METATYPE(Change)

class tst_Catalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void namesFault_data();
    void namesFault();
    void cyclesOfDenseGraphs();
    void latticeOfLinksEnds();
    void strictJson_data();
    void strictJson();
};

static QStringList problemsOf(const CatalogueTree &tree)
{
    Problems problems;
    Progress progress;
    checkCatalogue(readCatalogue(tree.path(), Links::Within, problems, progress), problems);
    QStringList lines;
    for (const Problem &problem : problems.sorted())
        lines.append(
            problem.file + (problem.severity == Problem::Error ? ": error: " : ": warning: ")
            + problem.text);
    return lines;
}

/// Each row is named by what has to be said.
void tst_Catalogue::namesFault_data()
{
    QTest::addColumn<Change>("change");
    const auto row = [](const QString &expected, const Change &change) {
        QTest::newRow(expected.toUtf8()) << change;
    };
    const auto file = [&](const QString &expected, const QString &path, const QByteArray &content) {
        row(expected, [=](CatalogueTree &tree) { tree.file(path, content); });
    };

    row("neither of the directories", [](CatalogueTree &tree) {
        tree.remove("");
        QDir().mkpath(tree.path());
    });
    row("there is no directory", [](CatalogueTree &tree) { tree.remove(""); });

    const auto link = [&](const QString &expected, const QString &from, const QString &type,
                          const QString &to) {
        row("links/x.json: " + expected,
            [=](CatalogueTree &tree) { tree.link("x", from, type, to); });
    };
    link("error: links to \"table\", which is neither", "stool", "is_a", "table");
    link("error: links to \"desk\", which is neither", "desk", "is_a", "stool");
    link("error: \"to\" names nothing", "stool", "is_a", "");
    link("error: unknown type of link \"IS_A\"", "stool", "IS_A", "chair");
    link("error: \"oak\" requires itself: oak -> oak", "oak", "requires", "oak");
    link("warning: says the same as links/stool-is-chair.json", "stool", "is_a", "chair");
    link("warning: \"chair\" is a kind of itself: chair -> chair", "chair", "is_a", "chair");
    row("links/stool-needs-oak.json: error: \"oak\" requires itself: oak -> loose -> stool -> oak",
        [](CatalogueTree &tree) {
            tree.link("a", "oak", "requires", "loose");
            tree.link("b", "loose", "requires", "stool");
        });

    const auto keyword = [&](const QString &expected, const QByteArray &json) {
        file("dictionary/k.json: error: " + expected, "dictionary/k.json", json);
    };
    keyword("unknown type of keyword \"Noun\"", R"({"type":"Noun"})");
    keyword("unknown type of keyword without a text", R"({"type":3})");
    keyword("has no text in any language", R"({"type":"name","strings":{"de":[]}})");
    keyword("\"strings\" is no object", R"({"type":"name","string":"k"})");
    keyword("text 2 of \"de\" is no text", R"({"type":"name","strings":{"de":["k",7]}})");
    keyword("text 1 of \"de\" is no object", R"({"type":"noun","strings":{"de":["k"]}})");
    keyword("text 1 of \"de\" has neither", R"({"type":"noun","strings":{"de":[{"Sg":"k"}]}})");
    keyword("\"string\" is empty", R"({"type":"literal"})");
    keyword("\"string\" holds the", R"({"type":"literal","string":"a\u0000b"})");
    const QByteArray manyTexts = "\"k\"" + QByteArray(",\"k\"").repeated(255);
    keyword(
        "256 texts of \"de\", a ledger holds 255",
        R"({"type":"name","strings":{"de":[)" + manyTexts + "]}}");
    // One byte less than the limit each, but the plural and the separator count too.
    const QByteArray half(32768, 'x');
    keyword(
        "a text of \"de\" has 65537 bytes",
        R"({"type":"noun","strings":{"de":[{"sg":")" + half + R"(","pl":")" + half + "\"}]}}");
    file(
        "dictionary/k.de.json: error: readers look for \"k.json\"", "dictionary/k.de.json",
        R"({"type":"literal","string":"k"})");
    row("dictionary/stool.json: error: the identifier \"stool\" is taken already",
        [](CatalogueTree &tree) { tree.keyword("stool"); });

    const auto manifest = [&](const QString &expected, const QByteArray &json) {
        file("packages/p/manifest.json: error: " + expected, "packages/p/manifest.json", json);
    };
    manifest("not valid JSON: parse error at line 2, column 1", "{\n");
    manifest("not a JSON object", "[1]");
    manifest("the key \"ab\" appears", R"({"x":{"ab":1,"\u0061b":2}})");
    manifest("is larger than 1 MiB", "{" + QByteArray(0x100000, ' ') + "}");
    manifest(
        "the manifest, without white space, has 65536 bytes",
        "{ \"k\": \"" + QByteArray(65536 - 8, 'x') + "\" }");
    row("packages/p/manifest.json: error: is no file",
        [](CatalogueTree &tree) { tree.directory("packages/p/manifest.json/x"); });
    row("packages/pipe/manifest.json: error: is no file", [](CatalogueTree &tree) {
        tree.directory("packages/pipe");
        QCOMPARE(::mkfifo(qPrintable(tree.path() + "/packages/pipe/manifest.json"), 0600), 0);
    });
    row("packages/other/stool/manifest.json: error: the identifier \"stool\" is taken already by "
        "packages/furniture/chairs/stool/manifest.json",
        [](CatalogueTree &tree) { tree.package("other/stool"); });
    row("packages/a:b: error: the name of a type can't hold",
        [](CatalogueTree &tree) { tree.package("a:b/p"); });
    row("packages/tür: warning: the identifier needs percent-encoding",
        [](CatalogueTree &tree) { tree.package("tür"); });
    row("packages/a:b: warning: the identifier needs percent-encoding",
        [](CatalogueTree &tree) { tree.package("a:b"); });

    file("packages/p: warning: holds files but no manifest.json", "packages/p/a.png", "png");
    file("packages/loose/sub: warning: a directory inside", "packages/loose/sub/a.png", "png");
    file(
        "packages/loose/a b.png: warning: the name needs percent-encoding",
        "packages/loose/a b.png", "png");
    row("packages/loose/a.png: warning: differs from", [](CatalogueTree &tree) {
        tree.file("packages/loose/A.png", "one");
        tree.file("packages/loose/a.png", "other");
    });
    row("packages/loose/gone: error: links to something that doesn't exist",
        [](CatalogueTree &tree) { makeLink(tree.path() + "/packages/loose/gone", "nowhere"); });
    for (const QString entry : {"packages/loose/x", "packages/x", "dictionary/x.json"})
        row(entry + ": error: links out of the catalogue",
            [=](CatalogueTree &tree) { makeLink(tree.path() + '/' + entry, "/etc/passwd"); });
    row("packages/more: error: is the same directory as packages/materials",
        [](CatalogueTree &tree) { makeLink(tree.path() + "/packages/more", "materials"); });
    row("packages/a/b/back: error: links to a directory above itself", [](CatalogueTree &tree) {
        makeLink(tree.path() + "/packages/a/b/back", tree.path() + "/packages/a");
    });
    file(
        "packages/loose/a.png: error: the name begins with U+FEFF", "packages/loose/\uFEFFa.png",
        "png");
    row("packages/loose/\uFFFD.png: error: the name isn't valid UTF-8", [](CatalogueTree &tree) {
        tree.file("packages/loose/right.png", "png");
        const QByteArray package = tree.path().toUtf8() + "/packages/loose/";
        QCOMPARE(::rename(package + "right.png", package + "\xff.png"), 0);
    });
}

/// The fault in a tree that has no other; what follows from an error may come as a warning.
void tst_Catalogue::namesFault()
{
    QFETCH(Change, change);
    CatalogueTree tree;
    tree.fillWithGoods();
    change(tree);
    const QString problems = problemsOf(tree).join('\n');
    QVERIFY2(problems.contains(QString::fromUtf8(QTest::currentDataTag())), qPrintable(problems));
    const int errors = problems.count(": error: ");
    QCOMPARE(errors > 0 ? errors : problems.count('\n') + 1, 1);
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

/// Twenty levels of which each leads to the next by two links: a million ways down.
void tst_Catalogue::latticeOfLinksEnds()
{
    CatalogueTree tree;
    const QString level = tree.path() + "/packages/%1/";
    for (int i = 0; i < 20; ++i) {
        makeLink(level.arg(i) + "a", QString("../%1").arg(i + 1));
        makeLink(level.arg(i) + "b", QString("../%1").arg(i + 1));
    }
    tree.package("20/p");
    const QStringList problems = problemsOf(tree);
    QCOMPARE(problems.filter("is the same directory as").size(), 40);
}

void tst_Catalogue::strictJson_data()
{
    Columns<QByteArray, QByteArray, QString>("text", "canonical", "fault")
        .row("sorted keys", R"({"b":1,"a":[true,null]})", R"({"a":[true,null],"b":1})", "")
        .row(
            "one key in two objects", R"({"a":{"k":1},"b":{"k":1}})",
            R"({"a":{"k":1},"b":{"k":1}})", "")
        .row("surrogate pair", R"({"a":"\ud83d\ude00"})", "{\"a\":\"\xf0\x9f\x98\x80\"}", "")
        .row(
            "largest exact integer", R"({"a":-9007199254740991})", R"({"a":-9007199254740991})", "")
        .row("large float", R"({"a":1.0e300})", R"({"a":1e+300})", "")
        .row("zero below nothing", R"({"a":-0.0})", R"({"a":0})", "")
        .row("nothing", "", "", "parse error")
        .row("text behind the object", "{}{}", "", "parse error")
        .row("key twice", R"({"a":1,"a":1})", "", "appears twice")
        .row("key twice, escaped", R"({"\u00fc":1,"ü":1})", "", "appears twice")
        .row("high surrogate alone", R"({"a":"\ud83d"})", "", "surrogate")
        .row("low surrogate alone", R"({"a":"\ude00"})", "", "surrogate")
        .row("lone surrogate in a key", R"({"\ud83dx":1})", "", "surrogate")
        .row("mark in front of a text", R"({"a":["\ufeffb"]})", "", "begins with U+FEFF")
        .row("mark in front of a key", R"({"\ufeffa":1})", "", "begins with U+FEFF")
        .row("mark behind the front", R"({"a":"b\ufeff"})", "{\"a\":\"b\xef\xbb\xbf\"}", "")
        .row("surrogate in UTF-8", "{\"a\":\"\xed\xa0\x80\"}", "", "ill-formed UTF-8")
        .row("overlong UTF-8", "{\"a\":\"\xc0\x80\"}", "", "ill-formed UTF-8")
        .row("number above the double range", R"({"a":1e400})", "", "number overflow")
        .row("number below the double range", R"({"a":[-1e400]})", "", "number overflow")
        .row("integer that a double rounds", R"({"a":9007199254740993})", "", "more digits")
        .row(
            "negative integer that a double rounds", R"({"a":-9007199254740993})", "",
            "more digits")
        .row(
            "integer of thirty digits", R"({"a":123456789012345678901234567890})", "",
            "more digits")
        .row("a string", R"("a")", "", "not a JSON object")
        .row("array without end", QByteArray(200000, '['), "", "parse error")
        .row(
            "deep nesting", "{\"a\":" + QByteArray(5000, '[') + QByteArray(5000, ']') + "}", "",
            "deep");
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

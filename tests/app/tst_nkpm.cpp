// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/columns.h"
#include "support/programcall.h"
#include "support/testfiles.h"

#include <QDir>
#include <QJsonArray>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

using namespace nk::pm::test;

namespace {

const QString exampleCatalogue = NKPM_EXAMPLE_CATALOGUE;

QStringList idsOf(const QJsonValue &array)
{
    QStringList result;
    for (const QJsonValue &value : array.toArray())
        result.append(value["id"].toString());
    return result;
}

QStringList namesIn(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
}

} // namespace

/// The program as its user meets it: arguments in, text and exit code out.
class tst_Nkpm : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_root.reset(new QTemporaryDir); }
    void lists_data();
    void lists();
    void listsJson();
    void namesFollowTheLanguage();
    void showsAPackage();
    void listsKeywords_data();
    void listsKeywords();
    void sourcesTellWhatTheyContribute();
    void installs();
    void installsTwice();
    void refusesWhatItCantMeet_data();
    void refusesWhatItCantMeet();
    void wrongUsage_data();
    void wrongUsage();
    void installErrorsNameTheFile();
    void namesCantSteerTheTerminal();
    void stylesOnlyTerminals_data();
    void stylesOnlyTerminals();
    void progressOnTerminalsOnly();
    void aFullDiskIsAnError();
    void verboseShowsTheLog();
    void interruptLeavesNothing_data();
    void interruptLeavesNothing();
    void aKilledInstallIsSweptByTheNext();

private:
    QString path(const QString &name) const { return m_root->filePath(name); }
    /// The arguments for a run on \a catalogue, with a data directory of the test's own.
    QStringList complete(const QStringList &arguments, const QString &catalogue) const;
    CallResult run(
        const QStringList &arguments, const QString &catalogue = exampleCatalogue,
        const QString &locale = "en_GB.UTF-8") const;
    /// What a terminal shows of a run whose other stream goes to /dev/null by \a redirection.
    QByteArray runOnTerminal(const QString &arguments, const QString &redirection) const;
    /// Starts an install that takes long and has no room in the end; returns when it copies.
    void startHugeInstall(QProcess &process) const;

    QScopedPointer<QTemporaryDir> m_root;
};

QStringList tst_Nkpm::complete(const QStringList &arguments, const QString &catalogue) const
{
    QStringList defaults;
    if (!arguments.contains("--local"))
        defaults << "--local" << catalogue;
    if (!arguments.contains("--data"))
        defaults << "--data" << path("data");
    return defaults + arguments;
}

CallResult tst_Nkpm::run(
    const QStringList &arguments, const QString &catalogue, const QString &locale) const
{
    return call(
        NKPM_PROGRAM, complete(arguments, catalogue), {},
        {{"LC_ALL", locale}, {"LANGUAGE", {}}, {"NO_COLOR", {}}});
}

QByteArray tst_Nkpm::runOnTerminal(const QString &arguments, const QString &redirection) const
{
    const QString command = complete({arguments, redirection}, exampleCatalogue).join(' ');
    return call("script", {"-q", "-e", "-c", "exec " NKPM_PROGRAM " " + command, "/dev/null"})
        .output;
}

void tst_Nkpm::lists_data()
{
    Columns<QString, QString>("arguments", "ids")
        .row(
            "types below a type", "plants",
            "plant-cactus plant-fern plant-monstera tree-birch tree-olive")
        .row(
            "sorted by a number", "lighting --sort price",
            "lantern-paper lamp-elbow lamp-globe lamp-arc")
        .row("search follows links, not names", "furniture:tables --search METAL", "table-disc")
        .row("a part of a word", "scenes --search arden", "scene-terrace")
        .row("no part of a word in full mode", "scenes --search arden --full", "")
        .row("the word in full mode", "scenes --search garden --full", "scene-terrace")
        .row("without what is excepted", "furniture:seating:benches --keyword living-room", "")
        .row("two keywords", "--keyword chair --keyword leather", "chair-freischwinger")
        .row("a field", "sounds --field loop --keyword quiet", "sound-clock sound-rain sound-wind");
}

void tst_Nkpm::lists()
{
    QFETCH(QString, arguments);
    const CallResult result = run(QStringList{"list"} + arguments.split(' '));
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.exitCode, 0);
    auto ids = result.firstWords();
    if (!arguments.contains("--sort"))
        ids.sort();
    QTEST(ids.join(' '), "ids");
}

void tst_Nkpm::listsJson()
{
    const CallResult result = run(
        {"list", "lighting", "--sort", "price", "--field", "price", "--field", "size", "--json"});
    QCOMPARE(result.exitCode, 0);
    const auto packages = result.json()["packages"].toArray();
    QCOMPARE(packages.size(), 4);
    QCOMPARE(
        packages.last().toObject(), (QJsonObject{
                                        {"id", "lamp-arc"},
                                        {"name", "Arc floor lamp"},
                                        {"type", "lighting:floor"},
                                        {"fields",
                                         QJsonObject{
                                             {"price", 20},
                                             {"size", QJsonArray{110, 190}},
                                         }},
                                    }));
    const CallResult unsorted = run({"list", "lighting", "--sort", "prise", "--json"});
    QVERIFY2(unsorted.errors.contains("\"prise\""), qPrintable(unsorted.errors));
    QCOMPARE(unsorted.json()["packages"].toArray().size(), 4);
    QCOMPARE(
        run({"list", "scenes", "--search", "no such", "--json"}).json()["packages"],
        QJsonValue(QJsonArray()));
}

void tst_Nkpm::namesFollowTheLanguage()
{
    const QStringList arguments{"list", "plants:outdoor"};
    QVERIFY(run(arguments, exampleCatalogue, "de_DE.UTF-8").output.contains("Olivenbaum"));
    QVERIFY(run(arguments).output.contains("Olive tree"));
}

void tst_Nkpm::showsAPackage()
{
    const auto shown = run({"show", "armchair-nora", "--json"}).json();
    QCOMPARE(shown["id"].toString(), QString("armchair-nora"));
    QCOMPARE(shown["type"].toString(), QString("furniture:seating:armchairs"));
    QCOMPARE(shown["name"].toString(), QString("Nora armchair"));
    QCOMPARE(shown["source"]["kind"].toString(), QString("local"));
    QCOMPARE(shown["source"]["location"].toString(), exampleCatalogue);
    QCOMPARE(shown["manifest"]["name"].toString(), QString("id:armchair-nora.name"));
    QCOMPARE(shown["requires"].toArray(), (QJsonArray{"material-wool", "material-oak"}));
    QVERIFY(shown["allRequired"].toArray().contains("texture-knit"));
    QCOMPARE(shown["requiredBy"].toArray(), QJsonArray{"scene-reading-corner"});
    const auto keywords = idsOf(shown["keywords"]);
    QVERIFY(keywords.contains("furniture") && keywords.contains("living-room"));
    QVERIFY(!keywords.contains("metal"));

    const QString text = run({"show", "armchair-nora"}).output;
    QVERIFY(text.contains(QRegularExpression("\ntype +furniture:seating:armchairs\n")));
    QVERIFY(text.contains(QRegularExpression("\nmanifest name +Nora armchair\n")));
}

void tst_Nkpm::listsKeywords_data()
{
    Columns<QStringList, QStringList>("arguments", "ids")
        .row("search", {"--search", "leather"}, {"leather"})
        .row("categories of a type", {"textures", "--categories"}, {"garden", "surfaces"})
        .row("a type", {"translation"}, {"translation-of-names"});
}

void tst_Nkpm::listsKeywords()
{
    QFETCH(QStringList, arguments);
    arguments.prepend("keywords");
    QTEST(run(arguments).firstWords(), "ids");
    QTEST(idsOf(run(arguments << "--json").json()["keywords"]), "ids");
}

void tst_Nkpm::sourcesTellWhatTheyContribute()
{
    const QString mine = path("mine");
    writeFile(mine + "/packages/furniture/tables/table-disc/manifest.json", "{}");
    writeFile(mine + "/packages/extra/manifest.json", "{}");
    const auto sources = run({"--local", exampleCatalogue, "--local", mine, "sources", "--json"})
                             .json()["sources"]
                             .toArray();
    QCOMPARE(sources.size(), 2);
    const auto example = sources[0].toObject(), own = sources[1].toObject();
    QCOMPARE(example["location"].toString(), exampleCatalogue);
    QCOMPARE(example["languages"].toArray(), (QJsonArray{"de", "en"}));
    QCOMPARE(own["location"].toString(), mine);
    QCOMPARE(own["packages"], QJsonValue(2));
    QCOMPARE(own["keywords"], QJsonValue(0));
    QCOMPARE(own["priority"], QJsonValue(3));
    // One package is in both; whoever wins it, nothing is counted twice.
    QCOMPARE(own["used"].toInt() + example["used"].toInt(), example["packages"].toInt() + 1);
}

void tst_Nkpm::installs()
{
    const QString into = path("into");
    const auto installed =
        run({"install", "scene-reading-corner", "--into", into, "--json"}).json();
    QCOMPARE(installed["directory"].toString(), into);
    const auto ids = idsOf(installed["packages"]);
    QCOMPARE(ids.last(), QString("scene-reading-corner"));
    QCOMPARE(ids.size(), 15);
    QVERIFY(ids.indexOf("texture-knit") < ids.indexOf("material-wool"));
    QVERIFY(ids.indexOf("material-wool") < ids.indexOf("armchair-nora"));
    for (const QJsonValue &package : installed["packages"].toArray()) {
        QCOMPARE(package["state"].toString(), QString("new"));
        QVERIFY(!package["files"].toArray().isEmpty());
        for (const auto &file : package["files"].toArray()) {
            const QString name = package["path"].toString() + '/' + file.toString();
            QCOMPARE(readFile(into + '/' + name), readFile(exampleCatalogue + "/packages/" + name));
        }
    }
    QCOMPARE(
        namesIn(into), (QStringList{
                           "furniture", "lighting", "materials", "plants", "presets", "scenes",
                           "sounds", "textures"}));
}

void tst_Nkpm::installsTwice()
{
    const QStringList arguments{"install", "plant-cactus", "plant-fern", "--into", path("into")};
    QCOMPARE(run(arguments).exitCode, 0);
    QCOMPARE(run(arguments).firstWords(), (QStringList{"present", "present"}));

    const QString file = path("into/plants/indoor/plant-fern/plant-fern.svg");
    writeFile(file, "changed by its user");
    const CallResult refused = run(arguments);
    QCOMPARE(refused.exitCode, 1);
    QVERIFY(refused.errors.contains("--replace"));
    QCOMPARE(readFile(file), QByteArray("changed by its user"));
    const CallResult replaced = run(arguments + QStringList{"--replace"});
    QCOMPARE(replaced.firstWords(), (QStringList{"present", "replaced"}));
    QVERIFY(readFile(file).startsWith("<svg"));
}

/// Each row is named by the call.
void tst_Nkpm::refusesWhatItCantMeet_data()
{
    Columns<QString>("message")
        .row("nkpm show nothing", "there is no package \"nothing\" (nkpm list shows all)")
        .row("nkpm show chair", "\"chair\" is a keyword, not a package (nkpm list --keyword chair)")
        .row("nkpm list furnitur", "no package is of type \"furnitur\" (nkpm list shows all)")
        .row("nkpm keywords furnitur", "no package is of type \"furnitur\" (nkpm list shows all)")
        .row(
            "nkpm list --keyword chairr",
            "there is no keyword \"chairr\" (nkpm keywords shows all)")
        .row(
            "nkpm install plant-fern plant-farn --into unused",
            "there is no package \"plant-farn\" (nkpm list shows all)")
        .row(
            "nkpm file plant-fern ../plant-cactus/manifest.json",
            "\"../plant-cactus/manifest.json\" leads out of the package \"plant-fern\"")
        .row("nkpm install plant-fern --into /etc/passwd/x", "/etc/passwd is not a directory")
        .row("nkpm list --local /no/such", "/no/such: no such directory")
        .row("nkpm list --local /etc/passwd", "/etc/passwd is not a directory")
        .row(
            "nkpm list --local /dev",
            "/dev is no catalogue: it holds neither \"packages\" nor \"dictionary\" nor \"links\"")
        .row(
            "nkpm list --data /dev/null/data",
            "/dev/null/data can't hold the program's own files: make it writable, or name another "
            "directory with --data");
}

void tst_Nkpm::refusesWhatItCantMeet()
{
    QFETCH(QString, message);
    const QStringList arguments = QString(QTest::currentDataTag()).split(' ').mid(1);
    for (const auto &json : {QStringList{}, QStringList{"--json"}}) {
        const CallResult result = run(arguments + json);
        QCOMPARE(result.errors, "nkpm: " + message + '\n');
        QCOMPARE(result.output, QByteArray());
        QCOMPARE(result.exitCode, 1);
    }
    QVERIFY(!QFileInfo::exists("unused"));
}

/// Each row is named by the call.
void tst_Nkpm::wrongUsage_data()
{
    Columns<QString>("part")
        .row("nkpm", "a command is missing")
        .row("nkpm lst", "there is no command \"lst\"")
        .row("nkpm list --serch x", "--serch")
        .row("nkpm list --search", "--search")
        .row("nkpm list --full", "--search")
        .row("nkpm install x", "--into")
        .row("nkpm install x --into ", "--into") // into the empty name
        .row("nkpm list --local ", "--local: names no directory")
        .row("nkpm install --into x", "ID")
        .row("nkpm show a b", "b")
        .row("nkpm store", "subcommand")
        .row("nkpm store clean", "--max-size")
        .row("nkpm store clean --max-size 1x", "--max-size")
        .row("nkpm store clean --max-size -1", "range");
}

void tst_Nkpm::wrongUsage()
{
    QFETCH(QString, part);
    const CallResult result = run(QString(QTest::currentDataTag()).split(' ').mid(1));
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    const QRegularExpression line(
        "^nkpm: .*" + QRegularExpression::escape(part) + ".*--help\\)\n$");
    QVERIFY2(result.errors.contains(line), qPrintable(result.errors));
}

void tst_Nkpm::installErrorsNameTheFile()
{
    writeFile(path("catalogue/packages/t/good/manifest.json"), "{}");
    writeFile(path("catalogue/packages/t/good/file.bin"), "good");
    writeFile(path("data/packages/install"), "a file where the installed packages have to be");
    const CallResult result = run({"install", "good", "--into", path("into")}, path("catalogue"));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(
        result.errors.contains("can't install good: Failed to install file"),
        qPrintable(result.errors));
    QVERIFY(result.errors.contains("good/file.bin"));
    QVERIFY(!QFileInfo::exists(path("into")));
}

void tst_Nkpm::namesCantSteerTheTerminal()
{
    const QString catalogue = path("catalogue");
    writeFile(
        catalogue + "/packages/t/evil\x1b[31m\nid/manifest.json",
        "{\"name\": \"red \\u001b[31m \\u202e over\\tand\\nout \\u009b \\u2028 "
        "\\udb40\\udc41 \\ud83d\\ude00\"}");
    const QString listed = run({"list"}, catalogue).output;
    QCOMPARE(listed.count('\n'), 1);
    QVERIFY2(listed.contains("evil\\u001b[31m\\u000aid"), qPrintable(listed));
    const CallResult asJson = run({"list", "--json"}, catalogue);
    QCOMPARE(idsOf(asJson.json()["packages"]), QStringList{"evil\x1b[31m\nid"});
    for (const QString &output : {listed, QString(asJson.output)}) {
        for (const char *character : {"\x1b", "\u202e", "\u009b", "\u2028", "\U000e0041"})
            QVERIFY2(!output.contains(character), qPrintable(output));
        QVERIFY(output.contains("\U0001f600"));
    }
}

void tst_Nkpm::stylesOnlyTerminals_data()
{
    Columns<QString, QString, bool>("terminal", "noColor", "styled")
        .row("a terminal", "xterm", {}, true)
        .row("a dumb terminal", "dumb", {}, false)
        .row("NO_COLOR", "xterm", "1", false)
        .row("empty NO_COLOR", "xterm", "", true);
}

void tst_Nkpm::stylesOnlyTerminals()
{
    QFETCH(QString, terminal);
    QFETCH(QString, noColor);
    QFETCH(bool, styled);
    qputenv("TERM", terminal.toUtf8());
    noColor.isNull() ? qunsetenv("NO_COLOR") : qputenv("NO_COLOR", noColor.toUtf8());
    const QByteArray shown = runOnTerminal("list scenes", "2>/dev/null");
    QVERIFY2(shown.contains("ID ") && shown.contains("scene-terrace"), shown);
    QCOMPARE(shown.contains("\x1b["), styled);
    QVERIFY(!run({"list", "scenes"}).output.contains("\x1b["));
}

void tst_Nkpm::progressOnTerminalsOnly()
{
    qputenv("TERM", "xterm");
    const QByteArray shown =
        runOnTerminal("install material-wool --into " + path("into"), ">/dev/null");
    const int first = shown.indexOf("Laying down texture-knit (1 of 2)");
    QVERIFY2(first >= 0 && first < shown.indexOf("Laying down material-wool (2 of 2)"), shown);
    QVERIFY2(shown.endsWith("\r\x1b[K"), "the line is taken away at the end");
    QCOMPARE(run({"install", "material-wool", "--into", path("other")}).errors, QString());
}

void tst_Nkpm::aFullDiskIsAnError()
{
    QProcess process;
    process.setStandardOutputFile("/dev/full");
    process.start(NKPM_PROGRAM, complete({"list"}, exampleCatalogue));
    const CallResult result = finish(process);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains("can't write the output"), qPrintable(result.errors));
}

void tst_Nkpm::verboseShowsTheLog()
{
    QVERIFY(run({"sources", "--verbose"}).errors.contains("Package index build took"));
    // Every build of the tests has that key.
    QCOMPARE(run({"sources"}).errors, QString("nkpm: warning: trusts the development key\n"));
}

void tst_Nkpm::startHugeInstall(QProcess &process) const
{
    writeFile(path("huge/packages/t/small/manifest.json"), "{}");
    writeFile(path("huge/packages/t/small/small.txt"), "small");
    writeFile(path("huge/packages/t/huge/manifest.json"), "{}");
    writeFile(path("huge/packages/t/huge/huge.bin"), "");
    QVERIFY(QFile::resize(path("huge/packages/t/huge/huge.bin"), qint64(16) << 30)); // a hole
    process.start(
        NKPM_PROGRAM, complete({"install", "small", "huge", "--into", path("into")}, path("huge")));
    const QFileInfo copy(path("into/.nkpm-staging/1/huge.bin"));
    const auto hasBegun = [&copy] { return QFileInfo(copy.filePath()).size() > 0; };
    QTRY_VERIFY_WITH_TIMEOUT(hasBegun(), 60000);
}

void tst_Nkpm::interruptLeavesNothing_data()
{
    Columns<int>("number").row("Ctrl-C", SIGINT).row("terminate", SIGTERM).row("hang-up", SIGHUP);
}

void tst_Nkpm::interruptLeavesNothing()
{
    QFETCH(int, number);
    QProcess process;
    startHugeInstall(process);
    if (QTest::currentTestFailed())
        return;
    kill(pid_t(process.processId()), number);
    const CallResult result = finish(process);
    QCOMPARE(result.errors, QString("nkpm: stopped, nothing was installed\n"));
    QCOMPARE(result.exitCode, 128 + number);
    QVERIFY(!QFileInfo::exists(path("into")));
}

void tst_Nkpm::aKilledInstallIsSweptByTheNext()
{
    QProcess process;
    startHugeInstall(process);
    if (QTest::currentTestFailed())
        return;
    process.kill();
    QCOMPARE(finish(process).exitCode, -1);
    QVERIFY(!QFileInfo::exists(path("into/t")));
    QCOMPARE(run({"install", "small", "--into", path("into")}, path("huge")).exitCode, 0);
    QCOMPARE(namesIn(path("into")), QStringList{"t"});
    QCOMPARE(readFile(path("into/t/small/small.txt")), QByteArray("small"));
}

QTEST_GUILESS_MAIN(tst_Nkpm)
#include "tst_nkpm.moc"

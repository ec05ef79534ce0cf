// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/testfiles.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using nk::pm::test::readFile;
using nk::pm::test::writeFile;

namespace {

constexpr int patience = 60000; // ms

/// What a run of nkpm gave back.
struct Result
{
    int code = -1;
    QString out;
    QString err;

    QJsonObject json() const { return QJsonDocument::fromJson(out.toUtf8()).object(); }
    /// The first word of each line.
    QStringList ids() const
    {
        QStringList result;
        for (const auto &line : out.split('\n', Qt::SkipEmptyParts))
            result.append(line.section(' ', 0, 0));
        return result;
    }
};

/// A terminal whose output a test can read.
class Terminal
{
public:
    Terminal()
        : m_master(posix_openpt(O_RDWR | O_NOCTTY))
    {
        grantpt(m_master);
        unlockpt(m_master);
        m_slave = ptsname(m_master);
        m_keepOpen = open(qPrintable(m_slave), O_RDWR | O_NOCTTY);
    }
    ~Terminal()
    {
        close(m_keepOpen);
        close(m_master);
    }
    QString name() const { return m_slave; }
    /// What was written so far; for after the writer's end.
    QByteArray read() const
    {
        fcntl(m_master, F_SETFL, O_NONBLOCK);
        QByteArray all;
        char piece[4096];
        for (ssize_t n = 0; (n = ::read(m_master, piece, sizeof piece)) > 0;)
            all.append(piece, int(n));
        return all;
    }

private:
    Q_DISABLE_COPY(Terminal)
    const int m_master;
    int m_keepOpen = -1;
    QString m_slave;
};

QStringList idsOf(const QJsonValue &array)
{
    QStringList result;
    for (const auto &value : array.toArray())
        result.append(value.toObject()["id"].toString());
    return result;
}

} // namespace

/// The program as its user meets it: arguments in, text and exit code out.
class tst_Nkpm : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
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
    void helpHasExamples_data();
    void helpHasExamples();
    void needsItsOwnDirectory();
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
    /// Prepares nkpm on \a catalogue, with a data directory of the test's own.
    void prepare(QProcess &process, const QStringList &arguments, const QString &catalogue) const;
    Result run(const QStringList &arguments, const QString &catalogue = exampleCatalogue()) const;
    static Result finish(QProcess &process);
    static QString exampleCatalogue() { return NKPM_EXAMPLE_CATALOGUE; }

    QString path(const QString &name) const { return m_root->filePath(name); }
    /// A catalogue of one package whose file takes long to copy and no room until then.
    QString hugeCatalogue() const;
    /// Starts an install of the huge package and returns when its copy has begun.
    void startHugeInstall(QProcess &process) const;

    QScopedPointer<QTemporaryDir> m_root;
};

void tst_Nkpm::init()
{
    m_root.reset(new QTemporaryDir);
}

void tst_Nkpm::prepare(
    QProcess &process, const QStringList &arguments, const QString &catalogue) const
{
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"LANG", "LANGUAGE", "LC_ALL", "LC_MESSAGES", "NO_COLOR"})
        environment.remove(name);
    environment.insert("LC_ALL", "en_GB.UTF-8");
    environment.insert("TERM", "xterm");
    process.setProcessEnvironment(environment);
    process.setProgram(NKPM_PROGRAM);
    process.setArguments(QStringList{"--local", catalogue, "--data", path("data")} + arguments);
}

Result tst_Nkpm::finish(QProcess &process)
{
    if (!process.waitForFinished(patience)) {
        process.kill();
        process.waitForFinished(patience);
        return {};
    }
    const bool exited = process.exitStatus() == QProcess::NormalExit;
    return {
        exited ? process.exitCode() : -2, QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

Result tst_Nkpm::run(const QStringList &arguments, const QString &catalogue) const
{
    QProcess process;
    prepare(process, arguments, catalogue);
    process.start();
    return finish(process);
}

void tst_Nkpm::lists_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("a type") << QStringList{"list", "plants:indoor"}
                            << QStringList{"plant-monstera", "plant-fern", "plant-cactus"};
    QTest::newRow("types below a type")
        << QStringList{"list", "plants"}
        << QStringList{"plant-monstera", "plant-fern", "plant-cactus", "tree-olive", "tree-birch"};
    QTest::newRow("sorted by an integer field")
        << QStringList{"list", "lighting", "--sort", "price"}
        << QStringList{"lantern-paper", "lamp-elbow", "lamp-globe", "lamp-arc"};
    QTest::newRow("search follows links, not names")
        << QStringList{"list", "furniture:tables", "--search", "METAL"}
        << QStringList{"table-disc"};
    QTest::newRow("a part of a word")
        << QStringList{"list", "scenes", "--search", "arden"} << QStringList{"scene-terrace"};
    QTest::newRow("no part of a word in full mode")
        << QStringList{"list", "scenes", "--search", "arden", "--full"} << QStringList{};
    QTest::newRow("the word in full mode")
        << QStringList{"list", "scenes", "--search", "garden", "--full"}
        << QStringList{"scene-terrace"};
    QTest::newRow("a keyword without what is excepted")
        << QStringList{"list", "furniture:seating:benches", "--keyword", "living-room"}
        << QStringList{};
    QTest::newRow("two keywords") << QStringList{
        "list", "--keyword", "chair", "--keyword",
        "leather"} << QStringList{"chair-freischwinger"};
    QTest::newRow("a field") << QStringList{"list", "sounds",    "--field",
                                            "loop", "--keyword", "quiet"}
                             << QStringList{"sound-clock", "sound-rain", "sound-wind"};
}

void tst_Nkpm::lists()
{
    QFETCH(QStringList, arguments);
    QFETCH(QStringList, ids);
    const Result result = run(arguments);
    QCOMPARE(result.err, QString());
    QCOMPARE(result.code, 0);
    auto found = result.ids();
    if (!arguments.contains("--sort")) {
        found.sort();
        ids.sort();
    }
    QCOMPARE(found, ids);
}

void tst_Nkpm::listsJson()
{
    const Result result = run(
        {"list", "lighting", "--sort", "price", "--field", "price", "--field", "size", "--json"});
    QCOMPARE(result.code, 0);
    const auto packages = result.json()["packages"].toArray();
    QCOMPARE(packages.size(), 4);
    const auto last = packages.last().toObject();
    QCOMPARE(last.keys(), (QStringList{"fields", "id", "name", "type"}));
    QCOMPARE(last["id"].toString(), QString("lamp-arc"));
    QCOMPARE(last["name"].toString(), QString("Arc floor lamp"));
    QCOMPARE(last["type"].toString(), QString("lighting:floor"));
    QCOMPARE(last["fields"].toObject()["price"], QJsonValue(20));
    QCOMPARE(last["fields"].toObject()["size"], (QJsonValue(QJsonArray{110, 190})));
    QCOMPARE(
        run({"list", "scenes", "--search", "no such", "--json"}).json()["packages"],
        QJsonValue(QJsonArray()));
}

void tst_Nkpm::namesFollowTheLanguage()
{
    QProcess process;
    prepare(process, {"list", "plants:outdoor"}, exampleCatalogue());
    auto environment = process.processEnvironment();
    environment.insert("LC_ALL", "de_DE.UTF-8");
    process.setProcessEnvironment(environment);
    process.start();
    const Result german = finish(process);
    QVERIFY2(german.out.contains("Olivenbaum"), qPrintable(german.out));
    QVERIFY(run({"list", "plants:outdoor"}).out.contains("Olive tree"));
}

void tst_Nkpm::showsAPackage()
{
    const auto shown = run({"show", "armchair-nora", "--json"}).json();
    QCOMPARE(shown["id"].toString(), QString("armchair-nora"));
    QCOMPARE(shown["type"].toString(), QString("furniture:seating:armchairs"));
    QCOMPARE(shown["name"].toString(), QString("Nora armchair"));
    QCOMPARE(shown["source"].toObject()["kind"].toString(), QString("local"));
    QCOMPARE(shown["source"].toObject()["location"].toString(), exampleCatalogue());
    QCOMPARE(shown["manifest"].toObject()["name"].toString(), QString("id:armchair-nora.name"));
    QCOMPARE(shown["requires"].toArray(), (QJsonArray{"material-wool", "material-oak"}));
    QVERIFY(shown["allRequired"].toArray().contains("texture-knit"));
    QCOMPARE(shown["requiredBy"].toArray(), QJsonArray{"scene-reading-corner"});
    const auto keywords = idsOf(shown["keywords"]);
    QVERIFY(keywords.contains("furniture") && keywords.contains("living-room"));
    QVERIFY(!keywords.contains("metal"));

    const Result text = run({"show", "armchair-nora"});
    QCOMPARE(text.code, 0);
    QVERIFY(text.out.contains(QRegularExpression("\ntype +furniture:seating:armchairs\n")));
    QVERIFY(text.out.contains(QRegularExpression("\nmanifest name +Nora armchair\n")));
}

void tst_Nkpm::listsKeywords_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("search") << QStringList{"keywords", "--search", "leather"}
                            << QStringList{"leather"};
    QTest::newRow("categories of a type")
        << QStringList{"keywords", "textures", "--categories"} << QStringList{"garden", "surfaces"};
    QTest::newRow("a type") << QStringList{"keywords", "translation"}
                            << QStringList{"translation-of-names"};
}

void tst_Nkpm::listsKeywords()
{
    QFETCH(QStringList, arguments);
    const Result result = run(arguments);
    QCOMPARE(result.code, 0);
    QTEST(result.ids(), "ids");
    QTEST(idsOf(run(arguments + QStringList{"--json"}).json()["keywords"]), "ids");
}

void tst_Nkpm::sourcesTellWhatTheyContribute()
{
    const QString mine = path("mine");
    writeFile(mine + "/packages/furniture/tables/table-disc/manifest.json", "{}");
    writeFile(mine + "/packages/extra/manifest.json", "{}");
    const auto sources = run({"--local", mine, "sources", "--json"}).json()["sources"].toArray();
    QCOMPARE(sources.size(), 2);
    const auto example = sources[0].toObject(), own = sources[1].toObject();
    QCOMPARE(example["location"].toString(), exampleCatalogue());
    QCOMPARE(own["location"].toString(), mine);
    QCOMPARE(own["packages"], QJsonValue(2));
    QCOMPARE(own["keywords"], QJsonValue(0));
    QCOMPARE(own["priority"], QJsonValue(3));
    // One package is in both; whoever wins it, nothing is counted twice.
    QCOMPARE(own["used"].toInt() + example["used"].toInt(), example["packages"].toInt() + 1);
    QCOMPARE(example["languages"].toArray(), (QJsonArray{"de", "en"}));
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
    for (const auto &value : installed["packages"].toArray()) {
        const auto package = value.toObject();
        QCOMPARE(package["state"].toString(), QString("new"));
        QVERIFY(!package["files"].toArray().isEmpty());
        for (const auto &file : package["files"].toArray()) {
            const QString name = package["path"].toString() + '/' + file.toString();
            QCOMPARE(
                readFile(into + '/' + name), readFile(exampleCatalogue() + "/packages/" + name));
        }
    }
    QCOMPARE(
        QDir(into).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        (QStringList{
            "furniture", "lighting", "materials", "plants", "presets", "scenes", "sounds",
            "textures"}));
}

void tst_Nkpm::installsTwice()
{
    const QStringList arguments{"install", "plant-cactus", "plant-fern", "--into", path("into")};
    QCOMPARE(run(arguments).code, 0);
    const Result again = run(arguments);
    QCOMPARE(again.code, 0);
    QCOMPARE(again.ids(), (QStringList{"present", "present"}));

    const QString file = path("into/plants/indoor/plant-fern/plant-fern.svg");
    writeFile(file, "changed by its user");
    const Result refused = run(arguments);
    QCOMPARE(refused.code, 1);
    QVERIFY(refused.err.contains("--replace"));
    QCOMPARE(readFile(file), QByteArray("changed by its user"));
    QCOMPARE(run(arguments + QStringList{"--replace"}).ids(), (QStringList{"present", "replaced"}));
    QVERIFY(readFile(file).startsWith("<svg"));
}

void tst_Nkpm::refusesWhatItCantMeet_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown package")
        << QStringList{"show", "nothing"}
        << "nkpm: there is no package 'nothing' (nkpm list shows all)\n";
    QTest::newRow("keyword taken for a package")
        << QStringList{"show", "chair"}
        << "nkpm: 'chair' is a keyword, not a package (nkpm list --keyword chair)\n";
    QTest::newRow("unknown type") << QStringList{
        "list", "furnitur"} << "nkpm: no package is of type 'furnitur' (nkpm list shows all)\n";
    QTest::newRow("unknown type of keywords")
        << QStringList{"keywords", "furnitur"}
        << "nkpm: no package is of type 'furnitur' (nkpm list shows all)\n";
    QTest::newRow("unknown keyword")
        << QStringList{"list", "--keyword", "chairr"}
        << "nkpm: there is no keyword 'chairr' (nkpm keywords shows all)\n";
    QTest::newRow("one unknown among the installed")
        << QStringList{"install", "plant-fern", "plant-farn", "--into", "unused"}
        << "nkpm: there is no package 'plant-farn' (nkpm list shows all)\n";
    QTest::newRow("missing directory")
        << QStringList{"--local", "/no/such", "list"} << "nkpm: /no/such: no such directory\n";
    QTest::newRow("a file as a catalogue") << QStringList{"--local", NKPM_PROGRAM, "list"}
                                           << "nkpm: " NKPM_PROGRAM " is not a directory\n";
    QTest::newRow("no catalogue")
        << QStringList{"--local", "/dev", "list"}
        << "nkpm: /dev is no catalogue: it holds neither \"packages\" nor \"dictionary\" nor "
           "\"links\"\n";
    QTest::newRow("install into a file")
        << QStringList{"install", "plant-fern", "--into", NKPM_PROGRAM "/below"}
        << "nkpm: " NKPM_PROGRAM " is not a directory\n";
}

void tst_Nkpm::refusesWhatItCantMeet()
{
    QFETCH(QStringList, arguments);
    for (const auto &json : {QStringList{}, QStringList{"--json"}}) {
        const Result result = run(arguments + json);
        QTEST(result.err, "message");
        QCOMPARE(result.out, QString());
        QCOMPARE(result.code, 1);
    }
    QVERIFY(!QFileInfo::exists("unused"));
}

void tst_Nkpm::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("part");
    QTest::newRow("no command") << QStringList{} << "a command is missing";
    QTest::newRow("unknown command") << QStringList{"lst"} << "there is no command 'lst'";
    QTest::newRow("unknown option") << QStringList{"list", "--serch", "x"} << "--serch";
    QTest::newRow("option without its value") << QStringList{"list", "--search"} << "--search";
    QTest::newRow("--full without a search") << QStringList{"list", "--full"} << "--search";
    QTest::newRow("install without a target") << QStringList{"install", "x"} << "--into";
    QTest::newRow("install into nothing") << QStringList{"install", "x", "--into", ""} << "--into";
    QTest::newRow("install without a package") << QStringList{"install", "--into", "x"} << "ID";
    QTest::newRow("show without a package") << QStringList{"show"} << "ID";
    QTest::newRow("show of two") << QStringList{"show", "a", "b"} << "b";
}

void tst_Nkpm::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, part);
    const Result result = run(arguments);
    QCOMPARE(result.code, 2);
    QCOMPARE(result.out, QString());
    QVERIFY2(result.err.contains(part), qPrintable(result.err));
    QVERIFY(result.err.startsWith("nkpm: "));
    QVERIFY2(result.err.endsWith("--help)\n"), qPrintable(result.err));
    QCOMPARE(result.err.count('\n'), 1);
}

void tst_Nkpm::helpHasExamples_data()
{
    QTest::addColumn<QString>("command");
    for (const char *command : {"list", "show", "keywords", "install", "sources"})
        QTest::newRow(command) << command;
}

void tst_Nkpm::helpHasExamples()
{
    QFETCH(QString, command);
    const Result result = run({command, "--help"});
    QCOMPARE(result.code, 0);
    QCOMPARE(result.err, QString());
    QVERIFY(result.out.contains(QRegularExpression("Examples?:\n  nkpm .*" + command)));
    const Result all = run({"--help"});
    QVERIFY(all.out.contains("Exit codes:"));
    QVERIFY(all.out.contains(QRegularExpression("\n  " + command + " ")));
}

void tst_Nkpm::needsItsOwnDirectory()
{
    writeFile(path("data"), "a file where the data directory has to be");
    const Result result = run({"list"});
    QCOMPARE(result.code, 1);
    QCOMPARE(result.out, QString());
    QCOMPARE(
        result.err, "nkpm: " + path("data")
                        + " can't hold the program's own files: make it writable, or name another "
                          "directory with --data\n");
}

void tst_Nkpm::installErrorsNameTheFile()
{
    const QString catalogue = path("catalogue");
    writeFile(catalogue + "/packages/t/broken/manifest.json", "{}");
    // A link to nowhere can be neither linked to nor copied.
    nk::pm::test::makeLink(catalogue + "/packages/t/broken/file.bin", path("nowhere"));
    writeFile(catalogue + "/packages/t/good/manifest.json", "{}");
    writeFile(catalogue + "/packages/t/good/file.bin", "good");
    writeFile(path("data/packages/install"), "a file where the installed packages have to be");
    const Result result = run({"install", "good", "--into", path("into")}, catalogue);
    QCOMPARE(result.code, 1);
    QVERIFY2(
        result.err.contains("can't install good: Failed to install file"), qPrintable(result.err));
    QVERIFY(result.err.contains("good/file.bin"));
    QVERIFY(!QFileInfo::exists(path("into")));
}

void tst_Nkpm::namesCantSteerTheTerminal()
{
    const QString catalogue = path("catalogue");
    writeFile(
        catalogue + "/packages/t/evil\x1b[31m\nid/manifest.json",
        "{\"name\": \"red \\u001b[31m \\u202e over\\tand\\nout\"}");
    const Result listed = run({"list"}, catalogue);
    QCOMPARE(listed.code, 0);
    QCOMPARE(listed.out.count('\n'), 1);
    QVERIFY(!listed.out.contains(QChar(0x1b)) && !listed.out.contains(QChar(0x202e)));
    QVERIFY2(listed.out.contains("evil\\u001b[31m\\u000aid"), qPrintable(listed.out));
    const auto package = run({"list", "--json"}, catalogue).json()["packages"].toArray().at(0);
    QCOMPARE(package.toObject()["id"].toString(), QString("evil\x1b[31m\nid"));
}

void tst_Nkpm::stylesOnlyTerminals_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("styled");
    QTest::newRow("a terminal") << "TERM"
                                << "xterm" << true;
    QTest::newRow("a dumb terminal") << "TERM"
                                     << "dumb" << false;
    QTest::newRow("NO_COLOR") << "NO_COLOR"
                              << "1" << false;
    QTest::newRow("empty NO_COLOR") << "NO_COLOR"
                                    << "" << true;
}

void tst_Nkpm::stylesOnlyTerminals()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    QFETCH(bool, styled);
    Terminal terminal;
    QProcess process;
    prepare(process, {"list", "scenes"}, exampleCatalogue());
    auto environment = process.processEnvironment();
    environment.insert(variable, value);
    process.setProcessEnvironment(environment);
    process.setStandardOutputFile(terminal.name());
    process.start();
    QCOMPARE(finish(process).code, 0);
    const QByteArray shown = terminal.read();
    QVERIFY2(shown.contains("ID ") && shown.contains("scene-terrace"), shown);
    QCOMPARE(shown.contains("\x1b["), styled);
    QVERIFY(!run({"list", "scenes"}).out.contains("\x1b["));
}

void tst_Nkpm::progressOnTerminalsOnly()
{
    Terminal terminal;
    QProcess process;
    prepare(process, {"install", "material-wool", "--into", path("into")}, exampleCatalogue());
    process.setStandardErrorFile(terminal.name());
    process.start();
    QCOMPARE(finish(process).code, 0);
    const QByteArray shown = terminal.read();
    const int first = shown.indexOf("Laying down texture-knit (1 of 2)");
    QVERIFY2(first >= 0 && first < shown.indexOf("Laying down material-wool (2 of 2)"), shown);
    QVERIFY2(shown.endsWith("\r\x1b[K"), "the line is taken away at the end");
    QCOMPARE(run({"install", "material-wool", "--into", path("other")}).err, QString());
}

void tst_Nkpm::aFullDiskIsAnError()
{
    QProcess process;
    prepare(process, {"list"}, exampleCatalogue());
    process.setStandardOutputFile("/dev/full");
    process.start();
    const Result result = finish(process);
    QCOMPARE(result.code, 1);
    QVERIFY2(result.err.contains("can't write the output"), qPrintable(result.err));
}

void tst_Nkpm::verboseShowsTheLog()
{
    const Result result = run({"sources", "--verbose"});
    QCOMPARE(result.code, 0);
    QVERIFY2(result.err.contains("norvak.package.index"), qPrintable(result.err.left(300)));
    QVERIFY(result.err.contains("Package index build took"));
    QCOMPARE(run({"sources"}).err, QString());
}

QString tst_Nkpm::hugeCatalogue() const
{
    const QString package = path("huge/packages/t/huge");
    writeFile(package + "/manifest.json", "{}");
    writeFile(path("huge/packages/t/small/manifest.json"), "{}");
    writeFile(path("huge/packages/t/small/small.txt"), "small");
    QFile file(package + "/huge.bin");
    if (!file.open(QIODevice::WriteOnly) || !file.resize(qint64(16) << 30))
        qFatal("No sparse file");
    return path("huge");
}

void tst_Nkpm::startHugeInstall(QProcess &process) const
{
    prepare(process, {"install", "small", "huge", "--into", path("into")}, hugeCatalogue());
    process.start();
    const QFileInfo copy(path("into/.nkpm-staging/1/huge.bin"));
    const auto hasBegun = [&copy] { return QFileInfo(copy.filePath()).size() > 0; };
    QTRY_VERIFY_WITH_TIMEOUT(hasBegun(), patience);
}

void tst_Nkpm::interruptLeavesNothing_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("Ctrl-C") << SIGINT;
    QTest::newRow("terminate") << SIGTERM;
    QTest::newRow("hang-up") << SIGHUP;
}

void tst_Nkpm::interruptLeavesNothing()
{
    QFETCH(int, number);
    QProcess process;
    startHugeInstall(process);
    if (QTest::currentTestFailed())
        return;
    kill(pid_t(process.processId()), number);
    const Result result = finish(process);
    QCOMPARE(result.err, QString("nkpm: stopped, nothing was installed\n"));
    QCOMPARE(result.code, 128 + number);
    QVERIFY(!QFileInfo::exists(path("into")));
}

void tst_Nkpm::aKilledInstallIsSweptByTheNext()
{
    QProcess process;
    startHugeInstall(process);
    if (QTest::currentTestFailed())
        return;
    process.kill();
    QCOMPARE(finish(process).code, -2);
    QVERIFY(!QFileInfo::exists(path("into/t")));
    QCOMPARE(run({"install", "small", "--into", path("into")}, path("huge")).code, 0);
    QCOMPARE(
        QDir(path("into")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList{"t"});
    QCOMPARE(readFile(path("into/t/small/small.txt")), QByteArray("small"));
}

QTEST_GUILESS_MAIN(tst_Nkpm)
#include "tst_nkpm.moc"

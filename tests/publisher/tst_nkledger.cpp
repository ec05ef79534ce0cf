// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "publish/filehasher.h"
#include "publish/layout.h"
#include "support/columns.h"
#include "support/testfiles.h"

#include <QDataStream>
#include <QDir>
#include <QJsonArray>
#include <QTest>

using namespace nk::pm::test;
using nk::pm::publisher::Layout;

namespace {

/// A directory with keys, a catalogue and its publication "public".
struct Workshop
{
    QTemporaryDir directory;
    CatalogueTree tree;
    const Layout layout{directory.path() + "/public"};

    Workshop()
    {
        makeKeys(directory.path());
        tree.fillWithGoods();
        publish();
    }

    CallResult call(const QStringList &arguments) const
    {
        return callNkledger(directory.path(), arguments);
    }

    /// Publishes without a fault.
    void publish() const { publishWithKeys(directory.path(), tree.path()); }

    CallResult verify() const { return call({"verify", "public", "--trust", "trust.pem"}); }

    QString path(const QString &name) const { return directory.filePath(name); }
};

} // namespace

class tst_Nkledger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstSteps();
    void keysAreGuarded();
    void refuses_data();
    void refuses();
    void allFaultsOfACatalogue();
    void verifyNamesTheRecord_data();
    void verifyNamesTheRecord();
    void verifyNamesTheFile();
    void diffNamesTheChanges();
    void prunesWhatNothingNames();
    void inspectsAClientsLedger();
    void showsProgressAndColoursOnATerminal();
    void sameNamesInEveryLocale();
    void killedPublisherLeavesAWholePublication();
};

void tst_Nkledger::firstSteps()
{
    const Workshop workshop;
    const QStringList arguments = publishArguments(workshop.tree.path(), "public");
    const CallResult published = workshop.call(arguments + QStringList{"--json"});
    QCOMPARE(published.errors, QString());
    QCOMPARE(published.exitCode, 0);
    QCOMPARE(published.json()["packages"].toInt(), 3);
    QCOMPARE(workshop.verify().output, "good: 3 packages, 1 issuer\n");

    const QJsonObject ledger = workshop.call({"inspect", "public", "--json"}).json();
    QCOMPARE(ledger["sha224"], published.json()["ledgerSha224"]);
    QCOMPARE(ledger["segments"][0]["offset"].toInt(), 38);
    QCOMPARE(ledger["issuers"][0]["labels"][0].toString(), "Studio");
    QCOMPARE(ledger["packages"][2]["manifest"]["title"].toString(), "Stool");
    QCOMPARE(
        ledger["keywords"][0]["strings"]["de"][0]["plural"].toString(),
        QString::fromUtf8("Stühle"));
    QCOMPARE(ledger["links"][3]["to"]["id"].toString(), "oak");
}

void tst_Nkledger::keysAreGuarded()
{
    const Workshop workshop;
    QCOMPARE(readFile(workshop.path("trust.pem")).size(), 113);
    for (const char *name : {"trust-private.pem", "studio-private.pem"}) {
        const auto mode = QFile::permissions(workshop.path(name)) & QFile::Permissions(0x7077);
        QCOMPARE(mode, QFile::ReadOwner | QFile::WriteOwner);
    }

    const QByteArray key = readFile(workshop.path("studio-private.pem"));
    const QByteArray record = readFile(workshop.path("studio-issuer.json"));
    QVERIFY(QFile::remove(workshop.path("studio.pem")));
    QCOMPARE(workshop.call({"keygen", "studio"}).exitCode, 1);
    QCOMPARE(readFile(workshop.path("studio-private.pem")), key);
    const QStringList issue{"issue",   "trust.pem", "--trust",  "trust-private.pem",
                            "--label", "x",         "--output", "studio-issuer.json"};
    QCOMPARE(workshop.call(issue).exitCode, 1);
    QCOMPARE(readFile(workshop.path("studio-issuer.json")), record);
    // A ledger counts a label's bytes in sixteen bits.
    QCOMPARE(
        workshop.call(QStringList(issue).replaceInStrings("x", QString(65536, 'x'))).exitCode, 2);
    // Half a pair is no pair, and nothing half-written stays behind.
    makeLink(workshop.path("other.pem"), "nowhere/x");
    QCOMPARE(workshop.call({"keygen", "other"}).exitCode, 1);
    QCOMPARE(QDir(workshop.directory.path()).entryList({"other*"}, QDir::Files), QStringList());
}

void tst_Nkledger::refuses_data()
{
    Columns<int, QString>("exitCode", "expected")
        .row("nkledger", 2, "a command is missing (nkledger --help)")
        .row("nkledger --bits", 2, "there is no option \"--bits\" (nkledger --help)")
        .row("nkledger publsh a", 2, "there is no command \"publsh\"")
        .row("nkledger keygen a --bits", 2, "--bits")
        .row("nkledger keygen ", 2, "NAME: names no file") // the empty name
        .row("nkledger publish a", 2, "OUT_DIR is required (nkledger publish --help)")
        .row("nkledger publish a b", 2, "--issuer is required (nkledger publish --help)")
        .row("nkledger serve a --port 70000", 2, "--port")
        .row(
            "nkledger publish a b --issuer x-private.pem --issuer y-private.pem", 2,
            "only one issuer can sign all packages")
        .row(
            "nkledger publish a b --issuer t=x-private.pem --issuer t=y-private.pem", 2,
            "only one issuer can sign packages of type \"t\"")
        .row(
            "nkledger issue a.pem --trust t --label 1 --label 2 --label 3", 2,
            "an issuer has two labels at most")
        .row("nkledger issue a.key --trust t --label 1", 2, "name the issuer record with --output")
        .row("nkledger check nowhere", 1, "there is no directory \"nowhere\"")
        .row("nkledger serve nowhere", 1, "\"nowhere\" is no publication")
        .row("nkledger inspect nowhere", 1, "can't read \"nowhere\": No such file")
        .row(
            "nkledger inspect trust.pem", 1,
            "\"trust.pem\" is no sound ledger: doesn't begin with \"ldgr\"")
        .row("nkledger verify trust.pem", 1, "doesn't begin with \"ldgr\"")
        .row(
            "nkledger verify public --trust trust-private.pem", 1,
            "\"trust-private.pem\" is not the PEM file of an Ed25519 public key")
        .row("nkledger publish a public --issuer trust.pem", 1, "must end in \"-private.pem\"")
        .row(
            "nkledger publish a public --issuer trust-private.pem", 1,
            "can't read \"trust-issuer.json\"")
        .row(
            "nkledger inspect public stool chaise", 1, "neither a package nor a keyword \"chaise\"")
        .row("nkledger verify public", 1, "not signed by the trust key");
}

/// Each row is named by the call.
void tst_Nkledger::refuses()
{
    QFETCH(int, exitCode);
    QFETCH(QString, expected);
    static const Workshop workshop;
    const CallResult result = workshop.call(QString(QTest::currentDataTag()).split(' ').mid(1));
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.errors.contains(expected), qPrintable(result.errors));
    if (exitCode == 2) {
        QCOMPARE(result.output, QByteArray());
        QCOMPARE(result.errors.count('\n'), 1);
    }
}

void tst_Nkledger::allFaultsOfACatalogue()
{
    Workshop workshop;
    const QByteArray before = readFile(workshop.layout.ledgerFile());
    workshop.tree.package("p", "[]");
    workshop.tree.link("x", "stool", "uses", "nothing");
    workshop.tree.file("packages/loose/a b", "blank");
    const CallResult result =
        workshop.call(publishArguments(workshop.tree.path(), "public") + QStringList{"--json"});
    QCOMPARE(result.exitCode, 1);
    const QStringList errors = result.errors.trimmed().split('\n');
    QCOMPARE(errors.size(), 4);
    QVERIFY(errors[0].startsWith("links/x.json: error: "));
    QVERIFY(errors[1].startsWith("packages/loose/a b: warning: "));
    QVERIFY(errors[2].startsWith("packages/p/manifest.json: error: "));
    QCOMPARE(errors[3], "nkledger: nothing was published because of 2 errors");
    QCOMPARE(result.json()["published"].toBool(), false);
    QCOMPARE(result.json()["problems"].toArray().size(), 3);
    QCOMPARE(readFile(workshop.layout.ledgerFile()), before);

    const CallResult checked = workshop.call({"check", workshop.tree.path()});
    QCOMPARE(checked.exitCode, 1);
    QCOMPARE(checked.output, "2 errors, 1 warning\n");
    workshop.tree.remove("packages/p");
    workshop.tree.remove("links/x.json");
    QCOMPARE(workshop.call({"check", workshop.tree.path()}).exitCode, 0);
    QCOMPARE(workshop.call({"check", workshop.tree.path(), "--strict"}).exitCode, 1);
}

void tst_Nkledger::verifyNamesTheRecord_data()
{
    const QByteArray keyStart = QByteArray::fromHex("302a300506032b65700321");
    Columns<QByteArray, QByteArray, QStringList>("before", "after", "problems")
        .row("nothing", "ldgr", "ldgr", {})
        .row(
            "manifest", "\"Stool\"", "\"Sofa!\"",
            {"package 2 \"stool\": the signature isn't that of issuer 0 Studio"})
        .row(
            "manifest's syntax", "{\"size\"", "[\"size\"",
            {"package 2 \"stool\": the manifest isn't JSON: missing value separator"})
        .row(
            "file name", "oak.png", "oak.jpg",
            {"package 1 \"oak\": the signature isn't that of issuer 0 Studio"})
        .row(
            "identifier, which isn't signed", QByteArray("\5\0stool", 7),
            QByteArray("\5\0../oa", 7),
            {"package 2 \"../oa\": type and identifier name no directory of its own"})
        .row(
            "link's end", QByteArray("\2\0\0\0\1\0\0\0", 8), QByteArray("\2\0\0\0\x63\0\0\0", 8),
            {"link 3: ends at a record that doesn't exist"})
        .row(
            "issuer's key", keyStart + '\0', keyStart + '\1',
            {"issuer 0 Studio: not signed by the trust key",
             "issuer 0 Studio: the public key is unusable",
             "package 0 \"loose\": the signature isn't that of issuer 0 Studio",
             "package 1 \"oak\": the signature isn't that of issuer 0 Studio",
             "package 2 \"stool\": the signature isn't that of issuer 0 Studio"});
}

void tst_Nkledger::verifyNamesTheRecord()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const Workshop workshop;
    QByteArray ledger = readFile(workshop.layout.ledgerFile());
    const int position = ledger.lastIndexOf(before);
    QVERIFY(position >= 0);
    writeFile(workshop.path("ledger"), ledger.replace(position, before.size(), after));
    const CallResult result = workshop.call({"verify", "ledger", "--trust", "trust.pem", "--json"});
    QStringList found;
    for (const QJsonValue &problem : result.json()["problems"].toArray())
        found.append(problem["subject"].toString() + ": " + problem["text"].toString());
    QTEST(found, "problems");
}

void tst_Nkledger::verifyNamesTheFile()
{
    Workshop workshop;
    const auto fileOf = [&](const QByteArray &content) {
        return workshop.layout.contentFile(nk::pm::publisher::digestOf(content));
    };
    writeFile(fileOf("v 0 0 0\n"), "v 0 0 1\n");
    QVERIFY(QFile::remove(fileOf(QByteArray(200000, 'o'))));
    const CallResult result = workshop.verify();
    QCOMPARE(result.exitCode, 1);
    const QStringList errors = result.errors.trimmed().split('\n');
    QCOMPARE(errors.size(), 2);
    QVERIFY(errors[0].startsWith("package 1 \"oak\", file \"oak.png\": error: can't read"));
    QVERIFY(errors[1].startsWith("package 2 \"stool\", file \"stool.obj\": error: "));
    QVERIFY(errors[1].endsWith("holds something else"));
}

void tst_Nkledger::diffNamesTheChanges()
{
    Workshop workshop;
    QVERIFY(QFile::copy(workshop.layout.ledgerFile(), workshop.path("before")));
    QCOMPARE(workshop.call({"diff", "before", "public"}).output, QByteArray());

    workshop.tree.package(
        "furniture/chairs/stool", R"({ "title": "Hocker", "size": [0.4, 0.45] })");
    workshop.tree.file("packages/furniture/chairs/stool/preview.svg", "<svg>new</svg>");
    workshop.tree.file("packages/furniture/chairs/stool/plan.svg", "<svg>plan</svg>");
    workshop.tree.remove("packages/loose");
    workshop.tree.package("tight");
    workshop.tree.file("dictionary/nordic.json", R"({"type":"adjective","strings":{"de":["n"]}})");
    workshop.tree.remove("links/stool-needs-oak.json");
    workshop.tree.link("new", "tight", "is", "nordic");
    workshop.publish();

    const CallResult result = workshop.call({"diff", "before", "public"});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(
        result.output,
        "- package loose\n"
        "+ package tight\n"
        "~ package stool: new file: plan.svg, changed file: preview.svg, manifest: title, "
        "manifest: type\n"
        "~ keyword nordic: strings, type\n"
        "- link stool requires oak\n"
        "+ link tight is nordic\n");
    const QJsonObject json = workshop.call({"diff", "before", "public", "--json"}).json();
    QCOMPARE(json["same"].toBool(true), false);
    QCOMPARE(json["packages"]["changed"][0]["id"].toString(), "stool");
}

void tst_Nkledger::prunesWhatNothingNames()
{
    Workshop workshop;
    workshop.tree.remove("packages/materials/oak/oak.png");
    workshop.publish();
    writeFile(workshop.layout.filesDirectory() + "/robots.txt", "not ours");
    const QDir files(workshop.layout.filesDirectory());
    QCOMPARE(files.entryList(QDir::Files).size(), 5);

    QCOMPARE(
        workshop.call({"prune", "public", "--dry-run"}).output,
        "1 file of 200000 bytes to remove, 2 kept\n");
    QCOMPARE(files.entryList(QDir::Files).size(), 5);
    QCOMPARE(workshop.call({"prune", "public"}).output, "1 file of 200000 bytes removed, 2 kept\n");
    QCOMPARE(files.entryList(QDir::Files).size(), 4);
    QCOMPARE(workshop.verify().exitCode, 0);

    // A ledger that can't be read names nothing, but that is no reason to remove everything.
    QVERIFY(QFile::resize(workshop.layout.ledgerFile(), 100));
    QCOMPARE(workshop.call({"prune", "public"}).exitCode, 1);
    QCOMPARE(files.entryList(QDir::Files).size(), 4);
}

void tst_Nkledger::inspectsAClientsLedger()
{
    const Workshop workshop;
    QByteArray wrapped;
    QDataStream stream(&wrapped, QIODevice::WriteOnly);
    stream << QByteArray("\"etag\"") << readFile(workshop.layout.ledgerFile());
    writeFile(workshop.path("wrapped"), wrapped);
    const QByteArray direct = workshop.call({"inspect", "public"}).output;
    QVERIFY(direct.contains("packages"));
    QCOMPARE(workshop.call({"inspect", "wrapped"}).output, direct);
    QCOMPARE(workshop.call({"inspect", "wrapped", "chaise"}).output, QByteArray());
}

void tst_Nkledger::showsProgressAndColoursOnATerminal()
{
    Workshop workshop;
    workshop.tree.link("x", "stool", "is", "nothing");
    const auto onTerminal = [&](const QString &environment) {
        const QString command = QString("env %1 TERM=xterm " NKLEDGER " check '%2'")
                                    .arg(environment, workshop.tree.path());
        return QString(call("script", {"-q", "-e", "-c", command, "/dev/null"}).output);
    };
    const QString coloured = onTerminal("-u NO_COLOR");
    QVERIFY2(coloured.contains("Reading packages: 1 of 3"), qPrintable(coloured));
    QVERIFY2(
        coloured.contains("links/x.json: \x1b[1;31merror\x1b[0m: links to"), qPrintable(coloured));
    const QString plain = onTerminal("NO_COLOR=1");
    QVERIFY2(plain.contains("Hashing files: 1 of 3"), qPrintable(plain));
    QVERIFY2(plain.contains("links/x.json: error: links to"), qPrintable(plain));
}

void tst_Nkledger::sameNamesInEveryLocale()
{
    Workshop workshop;
    workshop.tree.file(QString::fromUtf8("packages/loose/Stühle.svg"), "<svg>s</svg>");
    qputenv("LC_ALL", "C");
    workshop.publish();
    qputenv("LC_ALL", "C.UTF-8");
    QVERIFY(readFile(workshop.layout.ledgerFile()).contains("St\xc3\xbchle.svg"));
}

void tst_Nkledger::killedPublisherLeavesAWholePublication()
{
    Workshop workshop;
    const auto filesWritten = [&] {
        return QDir(workshop.layout.stagingDirectory()).entryList(QDir::Files).size()
               + QDir(workshop.layout.filesDirectory()).entryList(QDir::Files).size();
    };
    int unchanged = 0;
    for (int round = 0; round < 5; ++round) {
        const QByteArray before = readFile(workshop.layout.ledgerFile());
        for (int i = 0; i < 400; ++i)
            workshop.tree.file(
                QString("packages/loose/%1-%2").arg(round).arg(i),
                QByteArray::number(round * 400 + i));
        const int enough = filesWritten() + 1 + round * 80;
        QProcess publisher;
        publisher.setWorkingDirectory(workshop.directory.path());
        publisher.start(NKLEDGER, publishArguments(workshop.tree.path(), "public"));
        QTRY_VERIFY_WITH_TIMEOUT(
            filesWritten() >= enough || publisher.state() == QProcess::NotRunning, 60000);
        publisher.kill();
        QVERIFY(publisher.waitForFinished());

        const CallResult verified = workshop.verify();
        QVERIFY2(verified.exitCode == 0, qPrintable(verified.errors));
        unchanged += readFile(workshop.layout.ledgerFile()) == before;
    }
    QVERIFY(unchanged > 0); // else no publisher was killed at its work

    workshop.publish();
    QCOMPARE(QDir(workshop.layout.filesDirectory()).entryList(QDir::Files).size(), 1 + 3 + 2000);
    QCOMPARE(workshop.verify().exitCode, 0);
    QVERIFY(!QFileInfo::exists(workshop.layout.stagingDirectory()));
}

QTEST_GUILESS_MAIN(tst_Nkledger)
#include "tst_nkledger.moc"

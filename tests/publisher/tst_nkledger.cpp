// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "publish/layout.h"
#include "support/testfiles.h"

#include <QDataStream>
#include <QDir>
#include <QJsonArray>
#include <QTest>

#include <functional>

using namespace nk::pm::test;
using nk::pm::publisher::Layout;

namespace {

/// A directory with keys, a catalogue and, once it is published, "public".
struct Workshop
{
    QTemporaryDir directory;
    CatalogueTree tree;
    const Layout layout{directory.path() + "/public"};

    Workshop()
    {
        makeKeys(directory.path());
        tree.fillWithGoods();
    }

    CallResult call(const QStringList &arguments) const
    {
        return callNkledger(directory.path(), arguments);
    }

    QStringList publishArguments() const
    {
        return QStringList{"publish", tree.path(), "public"} + keyArguments();
    }

    CallResult publish(const QStringList &more = {}) const
    {
        return call(publishArguments() + more);
    }

    CallResult verify() const { return call({"verify", "public", "--trust", "trust.pem"}); }

    QString path(const QString &name) const { return directory.filePath(name); }
};

QStringList textsOf(const QJsonArray &problems)
{
    QStringList list;
    for (const QJsonValue &problem : problems)
        list.append(problem["subject"].toString() + ": " + problem["text"].toString());
    return list;
}

} // namespace

class tst_Nkledger : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void firstSteps();
    void privateKeysAreForTheirOwner();
    void overwritesNoKey();
    void wrongUsage_data();
    void wrongUsage();
    void namesWhatItCannotDo_data();
    void namesWhatItCannotDo();
    void allFaultsOfACatalogue();
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
    const CallResult published = workshop.publish({"--json"});
    QCOMPARE(published.errors, QString());
    QCOMPARE(published.exitCode, 0);
    QCOMPARE(published.json()["packages"].toInt(), 3);
    QCOMPARE(published.json()["newFiles"].toInt(), 3);
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

    const CallResult again = workshop.publish();
    QVERIFY2(again.output.contains("0 new files of 0 bytes, 3 kept"), again.output);
    QVERIFY(again.output.contains("unchanged"));
}

void tst_Nkledger::privateKeysAreForTheirOwner()
{
    const Workshop workshop;
    const auto mode = [&](const char *name) {
        return QFile::permissions(workshop.path(name))
               & (QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::WriteGroup
                  | QFile::ReadOther | QFile::WriteOther);
    };
    QCOMPARE(mode("trust-private.pem"), QFile::ReadOwner | QFile::WriteOwner);
    QCOMPARE(mode("studio-private.pem"), QFile::ReadOwner | QFile::WriteOwner);
    QVERIFY(mode("studio.pem") & QFile::ReadOther);
    QCOMPARE(readFile(workshop.path("trust.pem")).size(), 113);
}

void tst_Nkledger::overwritesNoKey()
{
    const Workshop workshop;
    const QByteArray key = readFile(workshop.path("studio-private.pem"));
    const QByteArray record = readFile(workshop.path("studio-issuer.json"));
    QVERIFY(QFile::remove(workshop.path("studio.pem")));
    QCOMPARE(workshop.call({"keygen", "studio"}).exitCode, 1);
    QCOMPARE(readFile(workshop.path("studio-private.pem")), key);
    QCOMPARE(
        workshop
            .call(
                {"issue", "trust.pem", "--trust", "trust-private.pem", "--label", "x", "--output",
                 "studio-issuer.json"})
            .exitCode,
        1);
    QCOMPARE(readFile(workshop.path("studio-issuer.json")), record);
    // Half a pair is no pair, and nothing half-written stays behind.
    QDir(workshop.directory.path()).mkdir("other.pem");
    QCOMPARE(workshop.call({"keygen", "other"}).exitCode, 1);
    QCOMPARE(QDir(workshop.directory.path()).entryList({"other*"}, QDir::Files), QStringList());
}

void tst_Nkledger::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QStringList &arguments, const char *expected) {
        QTest::newRow(name) << arguments << QString(expected);
    };
    row("nothing", {}, "A subcommand is required (nkledger --help)");
    row("unknown command", {"publsh", "a"}, "there is no command \"publsh\"");
    row("unknown option", {"keygen", "a", "--bits"}, "--bits");
    row("missing argument", {"publish", "a"}, "OUT_DIR is required (nkledger publish --help)");
    row("port out of range", {"serve", "a", "--port", "70000"}, "--port");
    row("two issuers for all packages",
        {"publish", "a", "b", "--issuer", "x-private.pem", "--issuer", "y-private.pem"},
        "only one issuer can sign all packages");
    row("two issuers for one type",
        {"publish", "a", "b", "--issuer", "t=x-private.pem", "--issuer", "t=y-private.pem"},
        "only one issuer can sign packages of type \"t\"");
    row("three labels",
        {"issue", "a.pem", "--trust", "t", "--label", "1", "--label", "2", "--label", "3"},
        "an issuer has two labels at most");
    row("issuer key of another name", {"issue", "a.key", "--trust", "t", "--label", "1"},
        "name the issuer record with --output");
}

void tst_Nkledger::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    const CallResult result = callNkledger(QDir::tempPath(), arguments);
    QCOMPARE(result.exitCode, 2);
    QCOMPARE(result.output, QByteArray());
    QVERIFY2(result.errors.contains(expected), qPrintable(result.errors));
    QCOMPARE(result.errors.count('\n'), 1);
}

void tst_Nkledger::namesWhatItCannotDo_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const QStringList &arguments, const char *expected) {
        QTest::newRow(name) << arguments << QString(expected);
    };
    row("no such catalogue", {"check", "nowhere"}, "there is no directory \"nowhere\"");
    row("no such publication", {"serve", "nowhere"}, "\"nowhere\" is no publication");
    row("no such ledger", {"inspect", "nowhere"}, "can't read \"nowhere\": No such file");
    row("ledger that is none", {"inspect", "trust.pem"},
        "\"trust.pem\" is no sound ledger: doesn't begin with \"ldgr\"");
    row("verified ledger that is none", {"verify", "trust.pem"}, "doesn't begin with \"ldgr\"");
    row("private key for a public one", {"verify", "public", "--trust", "trust-private.pem"},
        "\"trust-private.pem\" is not the PEM file of an Ed25519 public key");
    row("issuer key without a name to go by", {"publish", "a", "public", "--issuer", "trust.pem"},
        "must end in \"-private.pem\"");
    row("issuer without a record", {"publish", "a", "public", "--issuer", "trust-private.pem"},
        "can't read \"trust-issuer.json\"");
    row("unknown record", {"inspect", "public", "stool", "chaise"},
        "neither a package nor a keyword \"chaise\"");
    row("issuer unknown to the readers", {"verify", "public"}, "not signed by the trust key");
}

void tst_Nkledger::namesWhatItCannotDo()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, expected);
    static const Workshop workshop;
    if (!QFileInfo::exists(workshop.layout.ledgerFile()))
        QCOMPARE(workshop.publish().exitCode, 0);
    const CallResult result = workshop.call(arguments);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errors.contains(expected), qPrintable(result.errors));
}

void tst_Nkledger::allFaultsOfACatalogue()
{
    Workshop workshop;
    workshop.tree.package("p", "[]");
    workshop.tree.link("x", "stool", "uses", "nothing");
    workshop.tree.file("packages/loose/a b", "blank");
    const CallResult result = workshop.publish({"--json"});
    QCOMPARE(result.exitCode, 1);
    const QStringList errors = result.errors.trimmed().split('\n');
    QCOMPARE(errors.size(), 4);
    QVERIFY(errors[0].startsWith("links/x.json: error: "));
    QVERIFY(errors[1].startsWith("packages/loose/a b: warning: "));
    QVERIFY(errors[2].startsWith("packages/p/manifest.json: error: "));
    QCOMPARE(errors[3], "nkledger: nothing was published because of 2 errors");
    QCOMPARE(result.json()["published"].toBool(), false);
    QCOMPARE(result.json()["problems"].toArray().size(), 3);
    QVERIFY(!QFileInfo::exists(workshop.layout.ledgerFile()));

    const CallResult checked = workshop.call({"check", workshop.tree.path()});
    QCOMPARE(checked.exitCode, 1);
    QCOMPARE(checked.output, "2 errors, 1 warning\n");
}

void tst_Nkledger::verifyNamesTheRecord()
{
    const Workshop workshop;
    QCOMPARE(workshop.publish().exitCode, 0);
    const QByteArray ledger = readFile(workshop.layout.ledgerFile());
    const auto problemsWith = [&](const QByteArray &before, const QByteArray &after) {
        QByteArray changed = ledger;
        changed.replace(changed.indexOf(before), before.size(), after);
        writeFile(workshop.path("ledger"), changed);
        const CallResult result =
            workshop.call({"verify", "ledger", "--trust", "trust.pem", "--json"});
        return textsOf(result.json()["problems"].toArray());
    };
    QCOMPARE(problemsWith("ldgr", "ldgr"), QStringList());
    QCOMPARE(
        problemsWith("\"Stool\"", "\"Sofa!\""),
        QStringList("package 2 \"stool\": the signature isn't that of issuer 0 Studio"));
    QCOMPARE(
        problemsWith("{\"size\"", "[\"size\""),
        QStringList("package 2 \"stool\": the manifest isn't JSON: missing value separator"));
    QCOMPARE(
        problemsWith("oak.png", "oak.jpg"),
        QStringList("package 1 \"oak\": the signature isn't that of issuer 0 Studio"));
    // The last link's end: its record is the last of the file.
    QCOMPARE(
        problemsWith(ledger.right(10), ledger.right(10).left(6) + QByteArray("\x63\0\0\0", 4)),
        QStringList("link 3: ends at a record that doesn't exist"));
    // The issuer's key is the last of its segment.
    const QByteArray keyStart = QByteArray::fromHex("302a300506032b6570032100");
    const int key = ledger.indexOf(keyStart) + keyStart.size();
    const QStringList found =
        problemsWith(ledger.mid(key, 4), QByteArray(ledger.mid(key, 3)) + char(~ledger[key + 3]));
    QVERIFY(found.contains("issuer 0 Studio: not signed by the trust key"));
    QVERIFY(found.size() >= 4); // and no package's signature fits any more
}

void tst_Nkledger::verifyNamesTheFile()
{
    Workshop workshop;
    QCOMPARE(workshop.publish().exitCode, 0);
    const QDir files(workshop.layout.filesDirectory());
    const auto digestName = [&](qint64 size) {
        for (const QFileInfo &file : files.entryInfoList(QDir::Files)) {
            if (file.size() == size)
                return file.filePath();
        }
        return QString();
    };
    writeFile(digestName(8), "v 0 0 1\n");
    QVERIFY(QFile::remove(digestName(200000)));
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
    QCOMPARE(workshop.publish().exitCode, 0);
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
    QCOMPARE(workshop.publish().exitCode, 0);

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
    QCOMPARE(workshop.publish().exitCode, 0);
    workshop.tree.remove("packages/materials/oak/oak.png");
    QCOMPARE(workshop.publish().exitCode, 0);
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
    QCOMPARE(workshop.publish().exitCode, 0);
    QByteArray wrapped;
    QDataStream stream(&wrapped, QIODevice::WriteOnly);
    stream << QByteArray("\"etag\"") << readFile(workshop.layout.ledgerFile());
    writeFile(workshop.path("wrapped"), wrapped);
    const QByteArray direct = workshop.call({"inspect", "public"}).output;
    QVERIFY(direct.contains("packages"));
    QCOMPARE(workshop.call({"inspect", "wrapped"}).output, direct);
}

void tst_Nkledger::showsProgressAndColoursOnATerminal()
{
    Workshop workshop;
    workshop.tree.link("x", "stool", "is", "nothing");
    const QString call = QString(NKLEDGER) + " check '" + workshop.tree.path() + "'";
    const auto onTerminal = [&](const QString &environment) {
        QProcess terminal;
        terminal.start(
            "script",
            {"-q", "-e", "-c", "env " + environment + " TERM=xterm" + ' ' + call, "/dev/null"});
        terminal.waitForFinished(60000);
        return QString::fromUtf8(terminal.readAllStandardOutput());
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
    const CallResult result = workshop.publish();
    qputenv("LC_ALL", "C.UTF-8");
    QCOMPARE(result.exitCode, 0);
    QVERIFY(readFile(workshop.layout.ledgerFile()).contains("St\xc3\xbchle.svg"));
}

void tst_Nkledger::killedPublisherLeavesAWholePublication()
{
    Workshop workshop;
    QCOMPARE(workshop.publish().exitCode, 0);
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
        publisher.start(NKLEDGER, workshop.publishArguments());
        QTRY_VERIFY_WITH_TIMEOUT(
            filesWritten() >= enough || publisher.state() == QProcess::NotRunning, 60000);
        publisher.kill();
        QVERIFY(publisher.waitForFinished());

        const CallResult verified = workshop.verify();
        QVERIFY2(verified.exitCode == 0, qPrintable(verified.errors));
        unchanged += readFile(workshop.layout.ledgerFile()) == before;
    }
    QVERIFY(unchanged > 0); // else no publisher was killed at its work

    const CallResult last = workshop.publish({"--json"});
    QCOMPARE(last.exitCode, 0);
    QCOMPARE(last.json()["keptFiles"].toInt() + last.json()["newFiles"].toInt(), 3 + 5 * 400);
    QCOMPARE(workshop.verify().exitCode, 0);
    QVERIFY(!QFileInfo::exists(workshop.layout.stagingDirectory()));
}

QTEST_GUILESS_MAIN(tst_Nkledger)
#include "tst_nkledger.moc"

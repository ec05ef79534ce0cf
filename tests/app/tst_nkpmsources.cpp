// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/catalogue.h"
#include "cataloguetree.h"
#include "ledger/ledgerencoder.h"
#include "ledger/ledgersigner.h"
#include "nkledgerprocess.h"
#include "publish/layout.h"
#include "support/columns.h"
#include "support/couchdbserver.h"
#include "support/testfiles.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QJsonArray>
#include <QRegularExpression>
#include <QtTest>

using namespace nk::pm::publisher;
using namespace nk::pm::test;
using nk::crypto::ed25519::PrivateKey;

namespace {

const char credentials[] = "reader:top-secret";

QByteArray nameManifest(const QByteArray &name)
{
    return "{\"name\": \"" + name + "\"}";
}

} // namespace

/// nkpm with sources on the network: a package server, a CouchDB database, and a directory.
class TestNkpmSources : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void mergesByPriority();
    void showsADatabaseAlone();
    void writesFilesBeforeTheyAreInstalled_data();
    void writesFilesBeforeTheyAreInstalled();
    void installsFiles();
    void mendsADamagedStore();
    void refusesAStrangersLedger();
    void showsWhatItHadBefore();
    void saysWhyASourceFails_data();
    void saysWhyASourceFails();
    void hostileNamesHarmNobody();

private:
    CallResult nkpm(const QStringList &arguments) const;

    QTemporaryDir m_directory;
    CatalogueTree m_local;
    std::unique_ptr<ServedPublication> m_server;
    std::unique_ptr<CouchDBServer> m_database;
    QStringList m_sources;
    QString m_data = "data";
};

void TestNkpmSources::initTestCase()
{
    m_local.package("things/shared", nameManifest("of the directory"));

    CatalogueTree database;
    database.package("things/shared", nameManifest("of the database"));
    // The view is then more than one packet, in chunks.
    database.package(
        "things/middle",
        R"({"name": "of the database", "filler": ")" + QByteArray(60000, 'x') + "\"}");
    database.file("packages/things/middle/middle.txt", "from the database");
    m_database = std::make_unique<CouchDBServer>(CouchDBServer::NoETag, credentials);
    QVERIFY(m_database->isRunning());
    const QString url = m_database->databaseUrl(credentials).toString();
    QCOMPARE(callNkledger(m_directory.path(), {"couch-push", database.path(), url}).exitCode, 0);

    CatalogueTree server;
    for (const char *id : {"shared", "middle", "lowest"})
        server.package(QString("things/%1").arg(id), nameManifest("of the server"));
    server.file("packages/things/lowest/lowest.txt", "from the server");
    makeKeys(m_directory.path(), Trust::DefaultPrograms);
    publishWithKeys(m_directory.path(), server.path());
    m_server = std::make_unique<ServedPublication>(m_directory.filePath("public"));
    QVERIFY(!m_server->url().isEmpty());
    m_sources =
        QStringList{"--server", m_server->url(), "--couchdb", m_database->databaseUrl().toString(),
                    "--local",  m_local.path()};
}

CallResult TestNkpmSources::nkpm(const QStringList &arguments) const
{
    return call(
        NKPM_PROGRAM, arguments + QStringList{"--data", m_directory.filePath(m_data), "--json"}, {},
        {{"NKPM_COUCHDB_USER", "reader"}, {"NKPM_COUCHDB_PASSWORD", "top-secret"}});
}

void TestNkpmSources::mergesByPriority()
{
    const auto show = [this](const QString &id) {
        return nkpm(QStringList{"show", id} + m_sources).json();
    };
    const QJsonObject shared = show("shared"), middle = show("middle"), lowest = show("lowest");
    QCOMPARE(shared["manifest"]["name"], "of the directory");
    QCOMPARE(middle["manifest"]["name"], "of the database");
    QCOMPARE(lowest["manifest"]["name"], "of the server");
    QVERIFY(middle["revision"].toString().startsWith("1-"));
    QCOMPARE(lowest["revision"].toString().size(), 32);
    // The issuer as it stands in its PEM file, so that it can be compared; never the label.
    const QByteArray issuer = lowest["issuer"].toString().toLatin1();
    QCOMPARE(issuer, readFile(m_directory.filePath("studio.pem")).split('\n').value(1));
    QVERIFY(!issuer.isEmpty());
    QCOMPARE(middle["issuer"].toString() + shared["issuer"].toString(), QString());

    const CallResult result = nkpm(QStringList{"sources"} + m_sources);
    QCOMPARE(result.exitCode, 0);
    QVERIFY(!(result.output + result.errors.toUtf8()).contains("top-secret"));
    QMap<QString, QPair<int, int>> offeredAndUsed;
    const QJsonArray sources = result.json()["sources"].toArray();
    for (const QJsonValue &source : sources)
        offeredAndUsed.insert(
            source["kind"].toString(), {source["packages"].toInt(), source["used"].toInt()});
    QCOMPARE(offeredAndUsed.value("local"), qMakePair(1, 1));
    QCOMPARE(offeredAndUsed.value("couchdb"), qMakePair(2, 1));
    QCOMPARE(offeredAndUsed.value("server"), qMakePair(3, 1));
}

void TestNkpmSources::showsADatabaseAlone()
{
    const CallResult result = nkpm({"list", "--couchdb", m_database->databaseUrl().toString()});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.errors, QString());
    QCOMPARE(result.json()["packages"].toArray().size(), 2);
}

void TestNkpmSources::writesFilesBeforeTheyAreInstalled_data()
{
    Columns<QStringList, int, QByteArray, QString>("arguments", "exitCode", "output", "error")
        .row("of the server, through the proxy", {"lowest", "lowest.txt"}, 0, "from the server", "")
        .row("of the database", {"middle", "middle.txt"}, 0, "from the database", "")
        .row(
            "of the directory", {"shared", "manifest.json"}, 0, nameManifest("of the directory"),
            "")
        .row(
            "file that the server hasn't got", {"lowest", "other.txt"}, 1, "",
            "has no file \"other.txt\"")
        .row("file that the directory hasn't got", {"shared", "other.txt"}, 1, "", "No such file")
        .row("unknown package", {"nowhere", "a.txt"}, 1, "", "nowhere")
        .row(
            "place that can't be written", {"lowest", "lowest.txt", "--output", "/nowhere/a"}, 1,
            "", "can't write \"/nowhere/a\"");
}

void TestNkpmSources::writesFilesBeforeTheyAreInstalled()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, output);
    QFETCH(QString, error);
    const CallResult result = nkpm(QStringList{"file"} + arguments + m_sources);
    QVERIFY2(result.errors.contains(error), qPrintable(result.errors));
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.output, output);

    if (exitCode == 0) {
        const QString target = m_directory.filePath("fetched");
        arguments += {"--output", target};
        QCOMPARE(nkpm(QStringList{"file"} + arguments + m_sources).exitCode, 0);
        QCOMPARE(readFile(target), output);
    }
}

void TestNkpmSources::installsFiles()
{
    const QString into = m_directory.filePath("into");
    const QStringList install{"install", "lowest", "middle", "--into", into};
    QCOMPARE(nkpm(install + m_sources).exitCode, 0);
    QCOMPARE(readFile(into + "/things/lowest/lowest.txt"), QByteArray("from the server"));
    QCOMPARE(readFile(into + "/things/middle/middle.txt"), QByteArray("from the database"));
}

void TestNkpmSources::mendsADamagedStore()
{
    const QString into = m_directory.filePath("into-again");
    const QStringList install{"install", "lowest", "middle", "--into", into};
    const CallResult whole = nkpm({"store", "verify"}); // which needs no source
    QVERIFY2(whole.exitCode == 0, whole.output + whole.errors.toUtf8());
    const QString store = m_directory.filePath("data/packages/files");
    QDirIterator objects(store, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    QStringList digests;
    while (objects.hasNext()) {
        QFile object(objects.next());
        digests.append(QDir(store).relativeFilePath(object.fileName()).remove('/'));
        QVERIFY(object.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
        QVERIFY(object.open(QIODevice::ReadWrite) && object.write("F") == 1);
    }
    QCOMPARE(digests.size(), 2); // of a SHA-224 and an MD5
    digests.sort();

    const CallResult found = nkpm({"store", "verify"});
    QCOMPARE(found.exitCode, 1);
    QVERIFY2(found.errors.contains("nkpm store repair"), qPrintable(found.errors));
    QStringList damaged;
    const QJsonArray damages = found.json()["damages"].toArray();
    for (const QJsonValue &damage : damages)
        damaged.append(damage["digest"].toString() + damage["state"].toString());
    QCOMPARE(damaged, digests.replaceInStrings(QRegularExpression("$"), "damaged"));
    const CallResult refused = nkpm(install + m_sources);
    QCOMPARE(refused.exitCode, 1);
    QVERIFY2(refused.errors.contains(".txt\" of things/"), qPrintable(refused.errors));
    QVERIFY(!QFileInfo::exists(into));

    const CallResult mended = nkpm(QStringList{"store", "repair"} + m_sources);
    QVERIFY2(mended.exitCode == 0, mended.output);
    QCOMPARE(mended.output.count("\"replaced\""), 2);
    QCOMPARE(nkpm(install + m_sources).exitCode, 0);
    QCOMPARE(readFile(into + "/things/middle/middle.txt"), QByteArray("from the database"));
    QCOMPARE(nkpm({"store", "usage"}).json().value("usage")["usedFiles"].toInt(), 2);
    QVERIFY(QDir(m_directory.filePath("data/packages/install")).removeRecursively());
    const CallResult cleaned = nkpm({"store", "clean", "--max-size", "0k"});
    QVERIFY2(cleaned.exitCode == 0, qPrintable(cleaned.errors));
    QCOMPARE(cleaned.json()["removedFiles"].toInt(), 2);
    QCOMPARE(cleaned.json().value("usage")["bytes"].toInt(), 0);
}

void TestNkpmSources::refusesAStrangersLedger()
{
    QTemporaryDir directory;
    makeKeys(directory.path(), Trust::Nobody);
    publishWithKeys(directory.path(), m_local.path());
    ServedPublication server(directory.filePath("public"));
    const QStringList list{"list", "--server", server.url()};
    const CallResult alone = nkpm(list);
    QCOMPARE(alone.exitCode, 1);
    QVERIFY2(alone.errors.contains("not signed for this program"), qPrintable(alone.errors));
    QVERIFY(alone.errors.contains(server.url()));
    QCOMPARE(alone.errors.count('\n'), 1);
    const CallResult besideOthers = nkpm(list + QStringList{"--local", m_local.path()});
    QCOMPARE(besideOthers.exitCode, 0);
    QCOMPARE(besideOthers.errors, alone.errors);
}

void TestNkpmSources::showsWhatItHadBefore()
{
    const QString url = m_server->url();
    QCOMPARE(nkpm({"show", "lowest", "--server", url}).exitCode, 0);
    QCOMPARE(m_server->interrupt(), 0);
    const CallResult offline = nkpm({"show", "lowest", "--server", url});
    QCOMPARE(offline.exitCode, 0);
    QVERIFY2(offline.errors.contains("showing what it had before"), qPrintable(offline.errors));
    QCOMPARE(offline.json().value("manifest")["name"], "of the server");
}

void TestNkpmSources::saysWhyASourceFails_data()
{
    const QString nobody = "http://127.0.0.1:1/db";
    const QString wrong = m_database->databaseUrl("reader:wrong").toString();
    Columns<QStringList, int, QString>("sources", "exitCode", "says")
        .row("nobody listens", {"--couchdb", nobody}, 1, "refused")
        .row("others go on", {"--couchdb", nobody, "--local", m_local.path()}, 0, "refused")
        .row("not for strangers", {"--couchdb", wrong}, 1, "another user")
        .row("no database in the URL", {"--couchdb", "http://127.0.0.1"}, 2, "a database has a URL")
        .row("no URL", {"--server", "somewhere"}, 2, "address");
}

void TestNkpmSources::saysWhyASourceFails()
{
    QFETCH(QStringList, sources);
    QFETCH(int, exitCode);
    QFETCH(QString, says);
    m_data = "new-data"; // nothing is kept from before
    const CallResult result = nkpm(QStringList{"list"} + sources);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.errors.contains(says), qPrintable(result.errors));
    QCOMPARE(result.errors.count('\n'), 1);
    QVERIFY(!result.errors.contains("wrong"));
}

/// Translations are installed unasked. Neither name is signed, and nkledger writes no such ledger.
void TestNkpmSources::hostileNamesHarmNobody()
{
    const auto path = [this](const char *name) { return m_directory.filePath(name); };
    QString fault;
    const QVector<Issuer> issuers{
        {{},
         PrivateKey::fromPEM(readFile(path("studio-private.pem"))),
         IssuerRecord::fromJson(readFile(path("studio-issuer.json")), &fault)}};
    const Layout layout(path("hostile"));
    const auto file = [&](const QString &name, const QByteArray &content) {
        const auto digest = QCryptographicHash::hash(content, QCryptographicHash::Sha224);
        writeFile(layout.contentFile(digest), content);
        return PackageFile{name, digest, content.size()};
    };
    const QVector<PackageFile> bad{file("v.txt", "bad"), file("x.txt", "bad")};
    Catalogue catalogue;
    catalogue.packages = {
        {"victim", "furniture", "", "{}", {file("v.txt", "good")}},
        {"chair", "furniture", "", "{}", {file("leg/x.txt", "bad")}},
        {"leg", "furniture:chair", "", "{}", {file("v.txt", "good")}},
        {"furniture/victim", "", "", "{}", bad}};
    for (const QString &id :
         {QString(), QString("../furniture/victim"), QString("..//furniture//victim/"),
          QString("a/../../furniture/chair/leg"), QString(".."), QString(QChar(0))})
        catalogue.packages.append({id, "translation", "", "{}", bad});
    catalogue.packages.append({"victim2", "translation:..:furniture:victim:..", "", "{}", bad});
    Progress progress;
    const QByteArray ledger = encodeLedger(catalogue, issuers).bytes;
    writeFile(layout.ledgerFile(), signLedger(ledger, issuers, {}, progress).bytes);
    const ServedPublication server(layout.root());
    QStringList sources{"--server", server.url()};
    CallResult result = nkpm(QStringList{"list", "--verbose"} + sources);
    QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
    QCOMPARE(result.json()["packages"].toArray().size(), catalogue.packages.size());
    QVERIFY(result.errors.contains("has no directory of its own and isn't installed"));
    const QString into = path("apart");
    const QStringList install{"install", "--into", into};
    QCOMPARE(nkpm(install + QStringList{"leg", "victim"} + sources).exitCode, 0);
    for (const char *id : {"", "chair", "..", "furniture/victim", "victim2"})
        QCOMPARE(nkpm(install + QStringList{id} + sources).exitCode, 1);
    const QString data = path("catalogue-data");
    sources << "--data" << data << "--screenshot" << path("picture.png");
    result = call(
        NKPM_CATALOGUE, sources, {},
        {{"QT_QPA_PLATFORM", "offscreen"}, {"ASAN_OPTIONS", "detect_leaks=0"}}); // Qt's own
    QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
    for (const QString &name : filesBelow(into) + filesBelow(data + "/packages/install")
                                   + filesBelow(m_directory.filePath(m_data) + "/packages/install"))
        QVERIFY2(!name.endsWith("x.txt") && !readFile(name).contains("bad"), qPrintable(name));
    QCOMPARE(filesBelow(into).filter("v.txt").size(), 2);
}

QTEST_GUILESS_MAIN(TestNkpmSources)
#include "tst_nkpmsources.moc"

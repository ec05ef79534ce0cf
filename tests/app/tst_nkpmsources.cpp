// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "support/couchdbserver.h"
#include "support/testfiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

using namespace nk::pm::test;

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
    void writesFilesBeforeTheyAreInstalled_data();
    void writesFilesBeforeTheyAreInstalled();
    void installsFromTheServer();
    void installsFromTheDatabase();
    void showsWhoSigned();
    void refusesAStrangersLedger();
    void showsWhatItHadBefore();
    void saysWhyASourceFails_data();
    void saysWhyASourceFails();

private:
    CallResult nkpm(const QStringList &arguments);
    QJsonObject show(const QString &id);

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
    database.package("things/middle", nameManifest("of the database"));
    database.file("packages/things/middle/middle.txt", "from the database");
    m_database = std::make_unique<CouchDBServer>(CouchDBServer::NoETag, credentials);
    QVERIFY(m_database->isRunning());
    QCOMPARE(
        callNkledger(
            m_directory.path(),
            {"couch-push", database.path(), m_database->databaseUrl(credentials).toString()})
            .exitCode,
        0);

    CatalogueTree server;
    for (const char *id : {"shared", "middle", "lowest"})
        server.package(QString("things/%1").arg(id), nameManifest("of the server"));
    server.file("packages/things/lowest/lowest.txt", "from the server");
    const QString directory = m_directory.path();
    QCOMPARE(callNkledger(directory, {"keygen", "studio"}).exitCode, 0);
    QCOMPARE(
        callNkledger(
            directory, {"issue", "studio.pem", "--label", "Studio", "--trust",
                        NKPM_SOURCE_DIR "/keys/development-trust-private.pem"})
            .exitCode,
        0);
    QCOMPARE(
        callNkledger(
            directory, {"publish", server.path(), "public", "--issuer", "studio-private.pem",
                        "--trust", NKPM_SOURCE_DIR "/keys/development-trust.pem"})
            .exitCode,
        0);
    m_server = std::make_unique<ServedPublication>(m_directory.filePath("public"));
    QVERIFY(!m_server->url().isEmpty());
    m_sources =
        QStringList{"--server", m_server->url(), "--couchdb", m_database->databaseUrl().toString(),
                    "--local",  m_local.path()};
}

CallResult TestNkpmSources::nkpm(const QStringList &arguments)
{
    QProcess process;
    process.setEnvironment(
        QProcess::systemEnvironment() << "NKPM_COUCHDB_USER=reader"
                                      << "NKPM_COUCHDB_PASSWORD=top-secret");
    process.start(
        NKPM_PROGRAM, arguments + QStringList{"--data", m_directory.filePath(m_data), "--json"});
    CallResult result;
    if (process.waitForFinished(120000) && process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    result.output = process.readAllStandardOutput();
    result.errors = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QJsonObject TestNkpmSources::show(const QString &id)
{
    return nkpm(QStringList{"show", id} + m_sources).json();
}

void TestNkpmSources::mergesByPriority()
{
    QCOMPARE(show("shared").value("manifest").toObject().value("name"), "of the directory");
    QCOMPARE(show("middle").value("manifest").toObject().value("name"), "of the database");
    QCOMPARE(show("lowest").value("manifest").toObject().value("name"), "of the server");
    QVERIFY(show("middle").value("revision").toString().startsWith("1-"));
    QCOMPARE(show("lowest").value("revision").toString().size(), 32);

    const CallResult result = nkpm(QStringList{"sources"} + m_sources);
    QCOMPARE(result.exitCode, 0);
    QVERIFY(!(result.output + result.errors.toUtf8()).contains("top-secret"));
    QMap<QString, QPair<int, int>> offeredAndUsed;
    const QJsonArray sources = result.json().value("sources").toArray();
    for (const QJsonValue &source : sources)
        offeredAndUsed.insert(
            source["kind"].toString(), {source["packages"].toInt(), source["used"].toInt()});
    QCOMPARE(offeredAndUsed.value("local"), qMakePair(1, 1));
    QCOMPARE(offeredAndUsed.value("couchdb"), qMakePair(2, 1));
    QCOMPARE(offeredAndUsed.value("server"), qMakePair(3, 1));
}

void TestNkpmSources::writesFilesBeforeTheyAreInstalled_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("output");
    QTest::addColumn<QString>("error");
    QTest::newRow("of the server, through the proxy")
        << QStringList{"lowest", "lowest.txt"} << 0 << QByteArray("from the server") << "";
    QTest::newRow("of the database")
        << QStringList{"middle", "middle.txt"} << 0 << QByteArray("from the database") << "";
    QTest::newRow("of the directory")
        << QStringList{"shared", "manifest.json"} << 0 << nameManifest("of the directory") << "";
    QTest::newRow("file that the server hasn't got")
        << QStringList{"lowest", "other.txt"} << 1 << QByteArray() << "has no file \"other.txt\"";
    QTest::newRow("file that the directory hasn't got")
        << QStringList{"shared", "other.txt"} << 1 << QByteArray() << "No such file";
    QTest::newRow("unknown package")
        << QStringList{"nowhere", "a.txt"} << 1 << QByteArray() << "nowhere";
    QTest::newRow("place that can't be written")
        << QStringList{"lowest", "lowest.txt", "--output", "/nowhere/a"} << 1 << QByteArray()
        << "can't write \"/nowhere/a\"";
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

void TestNkpmSources::installsFromTheServer()
{
    const QString into = m_directory.filePath("from-server");
    QCOMPARE(nkpm(QStringList{"install", "lowest", "--into", into} + m_sources).exitCode, 0);
    QFile file(into + "/things/lowest/lowest.txt");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("from the server"));
}

void TestNkpmSources::installsFromTheDatabase()
{
    const QString into = m_directory.filePath("from-database");
    QCOMPARE(nkpm(QStringList{"install", "middle", "--into", into} + m_sources).exitCode, 0);
    QFile file(into + "/things/middle/middle.txt");
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("from the database"));
}

/// As it stands in the issuer's PEM file, so that it can be compared; never the label.
void TestNkpmSources::showsWhoSigned()
{
    const QString issuer = show("lowest").value("issuer").toString();
    QVERIFY(!issuer.isEmpty());
    QVERIFY(readFile(m_directory.filePath("studio.pem")).contains(issuer.toUtf8() + '\n'));
    QCOMPARE(show("middle").value("issuer").toString(), QString()); // of the database
    QCOMPARE(show("shared").value("issuer").toString(), QString()); // of the directory
}

void TestNkpmSources::refusesAStrangersLedger()
{
    CatalogueTree tree;
    tree.package("things/a", nameManifest("a"));
    QTemporaryDir directory;
    makeKeys(directory.path());
    QCOMPARE(
        callNkledger(
            directory.path(), QStringList{"publish", tree.path(), "public"} + keyArguments())
            .exitCode,
        0);
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
    QCOMPARE(offline.json().value("manifest").toObject().value("name"), "of the server");
}

void TestNkpmSources::saysWhyASourceFails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("says");

    const QString nobody = "http://127.0.0.1:1/db";
    QTest::newRow("nobody listens") << QStringList{"list", "--couchdb", nobody} << 1 << "refused";
    QTest::newRow("others go on") << QStringList{
        "list", "--couchdb", nobody, "--local",
        m_local.path()} << 0 << "refused";
    QTest::newRow("not for strangers")
        << QStringList{"list", "--couchdb", m_database->databaseUrl("reader:wrong").toString()} << 1
        << "another user";
    QTest::newRow("no database in the URL")
        << QStringList{"list", "--couchdb", "http://127.0.0.1"} << 2 << "a database has a URL";
    QTest::newRow("no URL") << QStringList{"list", "--server", "somewhere"} << 2 << "address";
}

void TestNkpmSources::saysWhyASourceFails()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, says);
    m_data = "new-data"; // nothing is kept from before
    const CallResult result = nkpm(arguments);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.errors.contains(says), qPrintable(result.errors));
    QCOMPARE(result.errors.count('\n'), 1);
    QVERIFY(!result.errors.contains("wrong"));
}

QTEST_GUILESS_MAIN(TestNkpmSources)
#include "tst_nkpmsources.moc"

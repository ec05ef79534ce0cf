// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "support/columns.h"
#include "support/testfiles.h"

#include <QJsonArray>
#include <QtTest>

using namespace nk::pm::test;

/// nkpm collection: packages that the user keeps in a file.
class TestNkpmCollection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void keepsPackagesInAFile();
    void sweepsLeftovers();
    void keepsWhatItDoesNotKnow();
    void refuses_data();
    void refuses();

private:
    CallResult collection(const QStringList &arguments) const;
    QStringList packages() const;

    QTemporaryDir m_directory;
    CatalogueTree m_catalogue;
    const QString m_file = m_directory.filePath("collection.json");
};

void TestNkpmCollection::initTestCase()
{
    m_catalogue.package("things/ball", R"({"name": "Ball"})");
    m_catalogue.file("packages/things/ball/ball.txt", "round");
    m_catalogue.package("things/box");
    m_catalogue.package(QString::fromUtf8("things/日本"));
    m_catalogue.link("1", "box", "requires", "ball");
}

CallResult TestNkpmCollection::collection(const QStringList &arguments) const
{
    const QStringList options{
        "--local", m_catalogue.path(), "--data", m_directory.filePath("data"), "--json"};
    return call(NKPM_PROGRAM, QStringList{"collection", m_file} + arguments + options);
}

QStringList TestNkpmCollection::packages() const
{
    QStringList lines;
    const QJsonArray array = collection({"list"}).json().value("packages").toArray();
    for (const QJsonValue &package : array)
        lines << package["id"].toString() + ' ' + package["type"].toString();
    return lines;
}

void TestNkpmCollection::keepsPackagesInAFile()
{
    QCOMPARE(collection({"add", "box", "ball"}).exitCode, 0);
    QCOMPARE(collection({"add", "box"}).exitCode, 0); // is there already
    QCOMPARE(packages(), (QStringList{"box things", "ball things"}));
    QCOMPARE(collection({"remove", "ball"}).exitCode, 0);
    QCOMPARE(packages(), QStringList{"box things"});

    const QString into = m_directory.filePath("into");
    QCOMPARE(collection({"install", "--into", into}).exitCode, 0);
    QCOMPARE(readFile(into + "/things/ball/ball.txt"), QByteArray("round")); // required by the box
}

/// Of a program that was killed; a file of the user's and one that is being written stay.
void TestNkpmCollection::sweepsLeftovers()
{
    const QString old = m_directory.filePath(".collection.json.nkpm-0123abcd");
    const QString young = m_directory.filePath(".collection.json.nkpm-89abcdef");
    const QString own = m_directory.filePath("collection.json.backup");
    const QString lock = m_file + ".lock";
    for (const QString &path : {old, young, own, lock})
        writeFile(path, "");
    for (const QString &path : {old, own, lock})
        makeOld(path, 3600);
    QCOMPARE(collection({"add", "box"}).exitCode, 0);
    QVERIFY(!QFile::exists(old) && !QFile::exists(lock));
    QVERIFY(QFile::remove(young) && QFile::remove(own));
    QCOMPARE(packages(), QStringList{"box things"});
}

void TestNkpmCollection::keepsWhatItDoesNotKnow()
{
    writeFile(m_file, R"({"version": 1, "format": 2, "structs": {
        "box": {"package": "ref:1:box", "note": "mine"},
        "gone": {"package": "ref:1:gone"}, "view": {"zoom": 3}}})");
    QCOMPARE(packages(), (QStringList{"box things", "gone "}));
    QCOMPARE(collection({"add", "ball"}).exitCode, 0);
    const QByteArray saved = readFile(m_file).simplified();
    for (const char *part : {"\"format\": 2", "\"note\": \"mine\"", "\"zoom\": 3", "ref:1:ball"})
        QVERIFY2(saved.contains(part), saved);

    const CallResult install =
        collection({"install", "--into", m_directory.filePath("incomplete")});
    QCOMPARE(install.exitCode, 1);
    QVERIFY2(install.errors.contains("\"gone\""), qPrintable(install.errors));
}

void TestNkpmCollection::refuses_data()
{
    const QByteArray fine = R"({"structs": {"box": {"package": "ref:1:box"}}})";
    const QByteArray newer = R"({"version": 2, "structs": {}})";
    Columns<QByteArray, QStringList, int, QString>("content", "arguments", "exitCode", "says")
        .row("unknown package", fine, {"add", "ghost"}, 1, "\"ghost\"")
        .row("not in it", fine, {"remove", "ball"}, 1, "\"ball\"")
        .row("beyond Latin-1", fine, {"add", QString::fromUtf8("日本")}, 1, "beyond Latin-1")
        .row("no JSON", "box", {"list"}, 1, "collection.json")
        .row("no JSON to add to", "box", {"add", "ball"}, 1, "collection.json")
        .row("of a newer version", newer, {"add", "ball"}, 1, "newer version")
        .row("no action", fine, {}, 2, "--help")
        .row("nothing to add", fine, {"add"}, 2, "ID")
        .row("nowhere to install", fine, {"install"}, 2, "--into");
}

void TestNkpmCollection::refuses()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    QFETCH(QString, says);
    writeFile(m_file, content);
    const CallResult result = collection(arguments);
    QCOMPARE(result.exitCode, exitCode);
    QVERIFY2(result.errors.contains(says), qPrintable(result.errors));
    QCOMPARE(readFile(m_file), content);
}

QTEST_GUILESS_MAIN(TestNkpmCollection)
#include "tst_nkpmcollection.moc"

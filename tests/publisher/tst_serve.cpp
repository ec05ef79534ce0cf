// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "publish/filehasher.h"
#include "publish/layout.h"
#include "support/testfiles.h"

#include <QTest>

#include <sys/prctl.h>

#include <csignal>

using namespace nk::pm::test;
using nk::pm::publisher::digestOf;
using nk::pm::publisher::Layout;

namespace {

/// Ends with this process, whatever ends that.
class ChildProcess : public QProcess
{
    void setupChildProcess() override { prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

/// nginx with what "nkledger nginx-config" prints for it, on a socket in a directory of its own.
class ConfiguredNginx
{
public:
    ConfiguredNginx(const QString &publication, const QString &prefix)
    {
        const CallResult config = callNkledger(
            m_directory.path(),
            {"nginx-config", publication, "--listen", "unix:" + socket(), "--prefix", prefix});
        writeFile(m_directory.filePath("site.conf"), config.output);
        writeFile(
            m_directory.filePath("nginx.conf"),
            "daemon off; master_process off; pid nginx.pid; error_log error.log;\n"
            "events {}\n"
            "http { access_log off; client_body_temp_path t1; proxy_temp_path t2;\n"
            "fastcgi_temp_path t3; uwsgi_temp_path t4; scgi_temp_path t5;\n"
            "include site.conf; }\n");
        m_process.start(
            "nginx", {"-p", m_directory.path() + "/", "-c", "nginx.conf", "-e", "error.log"});
    }

    ~ConfiguredNginx()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    QString socket() const { return m_directory.filePath("socket"); }
    QString errors() const { return readFile(m_directory.filePath("error.log")); }

private:
    QTemporaryDir m_directory;
    ChildProcess m_process;
};

struct Answer
{
    int status = 0;
    QMap<QByteArray, QByteArray> headers; // names in lower case
    QByteArray body;
};

/// One request by curl.
Answer curl(const QStringList &arguments)
{
    QProcess process;
    process.start("curl", QStringList{"-s", "-i", "--path-as-is", "--max-time", "60"} + arguments);
    process.waitForFinished(120000);
    const QByteArray all = process.readAllStandardOutput();
    const int end = all.indexOf("\r\n\r\n");
    Answer answer;
    answer.body = all.mid(end + 4);
    QList<QByteArray> lines = all.left(end).split('\n');
    answer.status = lines.takeFirst().split(' ').value(1).toInt();
    for (const QByteArray &line : qAsConst(lines))
        answer.headers.insert(
            line.left(line.indexOf(':')).toLower(), line.mid(line.indexOf(':') + 1).trimmed());
    return answer;
}

} // namespace

/// Everything is asked of the development server and of a real one, which must agree.
class tst_Serve : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void answers_data();
    void answers();
    void ledgerIsSeenAsSoonAsItIsReplaced();
    void endsWhenInterrupted();
    void refusesValuesThatNginxWouldMisread_data();
    void refusesValuesThatNginxWouldMisread();

private:
    QTemporaryDir m_directory;
    CatalogueTree m_tree;
    const Layout m_layout{m_directory.path() + "/public dir"};
    QByteArray m_ledger;
    QByteArray m_etag;
    QString m_digest; // of a file of 200,000 bytes
};

void tst_Serve::initTestCase()
{
    makeKeys(m_directory.path());
    m_tree.fillWithGoods();
    const CallResult published = callNkledger(
        m_directory.path(),
        QStringList{"publish", m_tree.path(), m_layout.root()} + keyArguments());
    QCOMPARE(published.exitCode, 0);
    m_ledger = readFile(m_layout.ledgerFile());
    m_digest = digestOf(QByteArray(200000, 'o')).toHex();
    const QByteArray ledgerDigest = digestOf(m_ledger);
    m_etag = nk::pm::publisher::entityTag(
        nk::pm::publisher::modificationTime(ledgerDigest), m_ledger.size());
}

void tst_Serve::answers_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("body");

    const QString ledger = "/api/v1/ledger";
    const QString file = ledger + "/" + m_digest;
    const auto condition = [](const QByteArray &value) {
        return QStringList{"-H", "If-None-Match: " + value};
    };
    const QByteArray none;
    QTest::newRow("ledger") << QStringList() << ledger << 200 << m_ledger;
    QTest::newRow("known ledger") << condition(m_etag) << ledger << 304 << none;
    QTest::newRow("weak tag") << condition("W/" + m_etag) << ledger << 304 << none;
    QTest::newRow("one of two tags") << condition("\"a\", " + m_etag) << ledger << 304 << none;
    QTest::newRow("any tag") << condition("*") << ledger << 304 << none;
    QTest::newRow("other ledger") << condition("\"1-2\"") << ledger << 200 << m_ledger;
    QTest::newRow("head") << QStringList{"--head"} << ledger << 200 << none;
    QTest::newRow("file") << QStringList() << file << 200 << QByteArray(200000, 'o');
    QTest::newRow("range") << QStringList{"-r", "10-19"} << file << 206 << QByteArray(10, 'o');
    QTest::newRow("unknown file") << QStringList() << ledger + "/" + QString(56, '0') << 404
                                  << none;
    QTest::newRow("digest in capitals")
        << QStringList() << ledger + "/" + m_digest.toUpper() << 404 << none;
    QTest::newRow("ledger by its file name")
        << QStringList() << ledger + "/index.html" << 404 << none;
    QTest::newRow("publisher's state") << QStringList() << "/.nkledger/ledger" << 404 << none;
    QTest::newRow("path that climbs")
        << QStringList() << ledger + "/../../../.nkledger/ledger" << 404 << none;
    QTest::newRow("root") << QStringList() << "/" << 404 << none;
}

void tst_Serve::answers()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, path);
    QFETCH(int, status);
    QFETCH(QByteArray, body);
    static const ServedPublication server(m_layout.root());
    static const ConfiguredNginx nginx(m_layout.root(), "/shop.v1");
    static const ConfiguredNginx plainNginx(m_layout.root(), "");
    QTRY_VERIFY2(QFileInfo::exists(nginx.socket()), qPrintable(nginx.errors()));
    QTRY_VERIFY2(QFileInfo::exists(plainNginx.socket()), qPrintable(plainNginx.errors()));

    const QVector<QStringList> places{
        {server.url().chopped(1) + path},
        {"--unix-socket", nginx.socket(), "http://localhost/shop.v1" + path},
        {"--unix-socket", plainNginx.socket(), "http://localhost" + path},
    };
    QByteArray etag;
    for (const QStringList &place : places) {
        const Answer answer = curl(arguments + place);
        QCOMPARE(answer.status, status);
        if (status == 404)
            continue;
        QCOMPARE(answer.body, body);
        if (etag.isEmpty())
            etag = answer.headers.value("etag");
        QCOMPARE(answer.headers.value("etag"), etag);
        QVERIFY(!etag.isEmpty());
        if (status == 200)
            QCOMPARE(answer.headers.value("content-type"), "application/octet-stream");
    }
}

void tst_Serve::ledgerIsSeenAsSoonAsItIsReplaced()
{
    QTemporaryDir copy;
    const QString publication = copy.path() + "/public";
    const auto publish = [&] {
        return callNkledger(
            m_directory.path(),
            QStringList{"publish", m_tree.path(), publication} + keyArguments());
    };
    QCOMPARE(publish().exitCode, 0);
    const ServedPublication server(publication);
    const QStringList request{"-H", "If-None-Match: " + m_etag, server.url() + "api/v1/ledger"};
    QCOMPARE(curl(request).status, 304);
    m_tree.package("loose", R"({"new":true})");
    QCOMPARE(publish().exitCode, 0);
    const Answer answer = curl(request);
    QCOMPARE(answer.status, 200);
    QCOMPARE(answer.body, readFile(Layout(publication).ledgerFile()));
}

void tst_Serve::endsWhenInterrupted()
{
    ServedPublication server(m_layout.root());
    QVERIFY(server.url().startsWith("http://127.0.0.1:"));
    QCOMPARE(server.interrupt(), 0);
}

void tst_Serve::refusesValuesThatNginxWouldMisread_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("address that ends the line") << QStringList{"--listen", "80; root /"};
    QTest::newRow("name that opens a block") << QStringList{"--server-name", "a {"};
    QTest::newRow("relative prefix") << QStringList{"--prefix", "shop"};
    QTest::newRow("prefix that ends in a slash") << QStringList{"--prefix", "/shop/"};
    QTest::newRow("prefix with a variable") << QStringList{"--prefix", "/$uri"};
}

void tst_Serve::refusesValuesThatNginxWouldMisread()
{
    QFETCH(QStringList, arguments);
    const CallResult result =
        callNkledger(m_directory.path(), QStringList{"nginx-config", m_layout.root()} + arguments);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.output, QByteArray());
    QVERIFY(!result.errors.isEmpty());
}

QTEST_GUILESS_MAIN(tst_Serve)
#include "tst_serve.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "publish/filehasher.h"
#include "publish/layout.h"
#include "support/columns.h"
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
    QByteArray status, type, etag, body;
};

/// One request by curl.
Answer curl(const QStringList &arguments)
{
    const QTemporaryDir directory;
    const QString body = directory.filePath("body");
    const QStringList options{
        "-s", "--path-as-is", "--max-time", "60",
        "-o", body,           "-w",         "%{http_code}|%{content_type}|%header{etag}"};
    const auto parts = call("curl", arguments + options).output.split('|');
    return {parts.value(0), parts.value(1), parts.value(2), readFile(body)};
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
    void refusesValuesThatNginxWouldMisread();

private:
    QTemporaryDir m_directory;
    CatalogueTree m_tree;
    const Layout m_layout{m_directory.path() + "/public dir"};
    const QByteArray m_content = QByteArray(200000, 'o'); // of one of the goods
    QByteArray m_ledger;
    QByteArray m_etag;
};

void tst_Serve::initTestCase()
{
    makeKeys(m_directory.path());
    m_tree.fillWithGoods();
    publishWithKeys(m_directory.path(), m_tree.path(), m_layout.root());
    m_ledger = readFile(m_layout.ledgerFile());
    m_etag = nk::pm::publisher::entityTag(
        nk::pm::publisher::modificationTime(digestOf(m_ledger)), m_ledger.size());
}

void tst_Serve::answers_data()
{
    const auto unless = [](const QByteArray &tags) {
        return QStringList{"-H", "If-None-Match: " + tags};
    };
    const QString file = '/' + digestOf(m_content).toHex();
    Columns<QStringList, QString, int, QByteArray>("arguments", "path", "status", "body")
        .row("ledger", {}, "", 200, m_ledger)
        .row("known ledger", unless(m_etag), "", 304, "")
        .row("weak tag", unless("W/" + m_etag), "", 304, "")
        .row("one of two tags", unless("\"a\", " + m_etag), "", 304, "")
        .row("any tag", unless("*"), "", 304, "")
        .row("other ledger", unless("\"1-2\""), "", 200, m_ledger)
        .row("head", {"--head", "-o", "/dev/null"}, "", 200, "")
        .row("file", {}, file, 200, m_content)
        .row("range", {"-r", "10-19"}, file, 206, m_content.mid(10, 10))
        .row("unknown file", {}, '/' + QString(56, '0'), 404, "")
        .row("digest in capitals", {}, file.toUpper(), 404, "")
        .row("ledger by its file name", {}, "/index.html", 404, "")
        .row("publisher's state", {}, "/../../../.nkledger/ledger", 404, "")
        .row("root", {}, "/../../..", 404, "");
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
        {server.url() + "api/v1/ledger"},
        {"--unix-socket", nginx.socket(), "http://localhost/shop.v1/api/v1/ledger"},
        {"--unix-socket", plainNginx.socket(), "http://localhost/api/v1/ledger"},
    };
    QByteArray etag;
    for (QStringList place : places) {
        place.last() += path;
        const Answer answer = curl(arguments + place);
        QCOMPARE(answer.status, QByteArray::number(status));
        if (status == 404)
            continue;
        QCOMPARE(answer.body, body);
        if (etag.isEmpty())
            etag = answer.etag;
        QCOMPARE(answer.etag, etag);
        QVERIFY(!etag.isEmpty());
        if (status == 200)
            QCOMPARE(answer.type, "application/octet-stream");
    }
}

void tst_Serve::ledgerIsSeenAsSoonAsItIsReplaced()
{
    QTemporaryDir copy;
    const Layout layout(copy.path() + "/public");
    publishWithKeys(m_directory.path(), m_tree.path(), layout.root());
    ServedPublication server(layout.root());
    QVERIFY(server.url().startsWith("http://127.0.0.1:"));
    const QStringList request{"-H", "If-None-Match: " + m_etag, server.url() + "api/v1/ledger"};
    QCOMPARE(curl(request).status, "304");
    m_tree.package("loose", R"({"new":true})");
    publishWithKeys(m_directory.path(), m_tree.path(), layout.root());
    const Answer answer = curl(request);
    QCOMPARE(answer.status, "200");
    QCOMPARE(answer.body, readFile(layout.ledgerFile()));
    QCOMPARE(server.interrupt(), 0);
}

void tst_Serve::refusesValuesThatNginxWouldMisread()
{
    const QVector<QStringList> values{
        {"--listen", "80; root /"}, {"--server-name", "a {"}, {"--prefix", "shop"},
        {"--prefix", "/shop/"},     {"--prefix", "/$uri"},
    };
    for (const QStringList &value : values) {
        const CallResult result =
            callNkledger(m_directory.path(), QStringList{"nginx-config", m_layout.root()} + value);
        QCOMPARE(result.exitCode, 1);
        QCOMPARE(result.output, QByteArray());
        QVERIFY2(result.errors.contains(value.last()), qPrintable(result.errors));
    }
}

QTEST_GUILESS_MAIN(tst_Serve)
#include "tst_serve.moc"

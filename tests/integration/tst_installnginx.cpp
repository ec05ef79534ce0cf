// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/packageserverinstaller.h"
#include "support/ledgerbuilder.h"
#include "support/nginxserver.h"
#include "support/processinfo.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QtTest>
#include <norvakaccount/service.h>

using namespace nk::pm;
using namespace nk::pm::test;
using nk::account::Service;

namespace {

QString ledgerPath(const QByteArray &content)
{
    return "api/v1/ledger/" + fileHash(content).toHex();
}

} // namespace

/// Packages from a real server.
class InstallNginxTest : public QObject
{
    Q_OBJECT

private:
    QStringList storedFiles() const { return filesBelow(m_data.filePath("packages/files")); }

    ScopedDataLocation m_data;
    std::unique_ptr<NginxServer> m_server;
    QHash<QByteArray, QString> m_files;

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void allRoadsBringTheSameFiles_data();
    void allRoadsBringTheSameFiles();
    void manyRequestsLeaveNothingBehind();
};

void InstallNginxTest::initTestCase()
{
    if (!NginxServer::isInstalled())
        QSKIP("nginx and openssl are needed");
    m_server = std::make_unique<NginxServer>();
    QSslConfiguration::setDefaultConfiguration(m_server->trust());
    for (int i = 0; i < 30; ++i) {
        const QByteArray content = numberedContent(i, i * i * 200);
        m_server->addFile(ledgerPath(content), content);
        m_files.insert(fileHash(content), QString("file %1").arg(i));
    }
}

void InstallNginxTest::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    for (const QString &file : storedFiles())
        QVERIFY(QFile::remove(file));
}

void InstallNginxTest::allRoadsBringTheSameFiles_data()
{
    QTest::addColumn<QUrl>("base");
    QTest::newRow("plain") << m_server->url("/");
    QTest::newRow("gzip offered") << m_server->url("/gzip/");
    QTest::newRow("a connection for each file") << m_server->url("/closing/");
    QTest::newRow("moved") << m_server->url("/moved/");
    QTest::newRow("TLS") << m_server->tlsUrl("/");
    QTest::newRow("moved to TLS") << m_server->url("/tls-moved/");
    QTest::newRow("slowed") << m_server->url("/slow/");
}

void InstallNginxTest::allRoadsBringTheSameFiles()
{
    QFETCH(QUrl, base);
    QNetworkAccessManager manager;
    Service service("uuid", base, &manager);
    const InstallLocation location = InstallLocationRoot::createLocation().subLocation("a/b");
    PackageServerInstaller installer(m_files, &service, FileStore::instance(), location);
    QTRY_COMPARE_WITH_TIMEOUT(installer.status(), PackageInstaller::Succeeded, 120000);
    for (int i = 0; i < 30; ++i) {
        const QString path = location.pathToFile(QString("file %1").arg(i));
        QVERIFY(readFile(path) == numberedContent(i, i * i * 200));
    }
}

// What a month of polls and downloads comes to: unchanged ledgers, files that arrive, files that
// don't, redirects and an overloaded server.
void InstallNginxTest::manyRequestsLeaveNothingBehind()
{
    QNetworkAccessManager manager;
    Service service("uuid", m_server->url("/"), &manager);
    const auto store = FileStore::instance();
    m_server->addFile("ledger", "ledger");
    QByteArray etag;
    int open = 0;
    QMap<int, int> codes;
    const auto send = [&](int number) {
        static const char *const paths[] = {"./ledger", "./moved/ledger", "./busy/", "./missing"};
        QNetworkRequest what = service.createRequest(QUrl(QString(paths[number % 4])));
        if (number % 8 == 0)
            what.setRawHeader("If-None-Match", etag);
        auto *request = service.getRequest(what);
        request->setSuppressErrors(true);
        const QString digest = fileHash(QByteArray::number(number % 100)).toHex();
        FileStoreTarget *target = store->createTarget(digest, QCryptographicHash::Sha224);
        target->setParent(request);
        request->setDataSink(target);
        ++open;
        connect(request, &nk::Request::finished, request, [&, request, target, number] {
            --open;
            ++codes[request->responseCode()];
            etag = number == 0 ? request->reply()->rawHeader("ETag") : etag;
            if (number % 400 == 0)
                target->commit();
        });
    };
    const auto settled = [&] {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return open == 0;
    };
    const auto objects = [&] {
        return manager.findChildren<QObject *>().size() + store->children().size()
               + service.children().size();
    };
    send(0);
    QTRY_VERIFY_WITH_TIMEOUT(settled(), 60000);
    for (int i = 1; i <= 100; ++i)
        send(i);
    QTRY_VERIFY_WITH_TIMEOUT(settled(), 60000);
    const int objectsBefore = objects();
    const int descriptorsBefore = openDescriptors();
    codes.clear();
    for (int batch = 1; batch <= 100; ++batch) {
        for (int i = 0; i < 100; ++i)
            send(batch * 100 + i);
        QTRY_VERIFY_WITH_TIMEOUT(settled(), 60000);
    }
    QCOMPARE(codes, (QMap<int, int>{{200, 3750}, {304, 1250}, {404, 2500}, {503, 2500}}));
    QTRY_COMPARE(objects(), objectsBefore);
    // The manager keeps up to six connections; the server ends each after some requests, so that
    // any number of them may have been there before and now.
    const int connections = 6;
    QTRY_VERIFY(openDescriptors() <= descriptorsBefore + connections);
    QCOMPARE(storedFiles().size(), 1); // every commit was of the same digest
}

QTEST_GUILESS_MAIN(InstallNginxTest)

#include "tst_installnginx.moc"

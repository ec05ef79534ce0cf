// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "cataloguetree.h"
#include "nkledgerprocess.h"
#include "repository/packageaccessor.h"
#include "sources/packageserver.h"
#include "support/logrecorder.h"
#include "support/nginxserver.h"
#include "support/scopeddatalocation.h"

#include <norvakaccount/service.h>

#include <QNetworkAccessManager>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

/// A publication on a web server that knows files and directories and nothing of ledgers.
class tst_PlainServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void clientFollowsIt();

private:
    void publish();

    QTemporaryDir m_keys;
    ScopedDataLocation m_data;
    CatalogueTree m_tree;
    std::unique_ptr<NginxServer> m_server;
};

void tst_PlainServer::initTestCase()
{
    if (!NginxServer::isInstalled())
        QSKIP("needs nginx and openssl");
    m_server = std::make_unique<NginxServer>();
    QCOMPARE(callNkledger(m_keys.path(), {"keygen", "studio"}).exitCode, 0);
    QCOMPARE(
        callNkledger(
            m_keys.path(),
            {"issue", "studio.pem", "--trust", NKPM_DEVELOPMENT_KEY, "--label", "Studio"})
            .exitCode,
        0);
    m_tree.fillWithGoods();
}

void tst_PlainServer::publish()
{
    const CallResult result = callNkledger(
        m_keys.path(),
        {"publish", m_tree.path(), m_server->root(), "--issuer", "studio-private.pem"});
    QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
}

void tst_PlainServer::clientFollowsIt()
{
    publish();
    QNetworkAccessManager network;
    nk::account::Service service("plain", m_server->url("/"), &network);
    PackageServer source(&service);
    QSignalSpy updates(&source, &PackageSource::updateRequired);
    QTRY_COMPARE_WITH_TIMEOUT(updates.count(), 1, 60000);
    const auto accessor = source.getAccessor();
    accessor->load();
    QCOMPARE(accessor->packageCount(), 3);

    const auto poll = [&] {
        LogRecorder log("norvak.packageserver");
        source.update();
        [&] { QTRY_VERIFY_WITH_TIMEOUT(!log.lines().isEmpty(), 60000); }();
        return log.lines();
    };
    const QStringList noChanges{"debug: Package server update complete - no changes"};
    QCOMPARE(poll(), noChanges);
    publish(); // the same again
    QCOMPARE(poll(), noChanges);

    m_tree.package("new");
    publish();
    QVERIFY(poll() != noChanges);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(poll(), noChanges);
}

QTEST_GUILESS_MAIN(tst_PlainServer)
#include "tst_plainserver.moc"

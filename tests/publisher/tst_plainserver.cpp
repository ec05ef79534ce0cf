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
    void clientFollowsIt();
};

void tst_PlainServer::clientFollowsIt()
{
    if (!NginxServer::isInstalled())
        QSKIP("needs nginx and openssl");
    const NginxServer server;
    const ScopedDataLocation data;
    CatalogueTree tree;
    tree.fillWithGoods();
    makeKeys(data.path(), Trust::DefaultPrograms);
    const auto publish = [&] { publishWithKeys(data.path(), tree.path(), server.root()); };
    publish();
    QNetworkAccessManager network;
    nk::account::Service service("plain", server.url("/"), &network);
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
    publish(); // the same again
    QCOMPARE(poll(), noChanges);
    tree.package("new");
    publish();
    QVERIFY(poll() != noChanges);
    QCOMPARE(updates.count(), 2);
    QCOMPARE(poll(), noChanges);
}

QTEST_GUILESS_MAIN(tst_PlainServer)
#include "tst_plainserver.moc"

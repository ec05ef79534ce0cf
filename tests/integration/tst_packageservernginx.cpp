// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "repository/packageaccessor.h"
#include "sources/packageserver.h"
#include "support/ledgerbuilder.h"
#include "support/logrecorder.h"
#include "support/nginxserver.h"
#include "support/scopeddatalocation.h"

#include <norvakaccount/service.h>

#include <QNetworkAccessManager>
#include <QThreadPool>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

const QString noChanges = "debug: Package server update complete - no changes";

/// A ledger that is known by its only language: that is there even if nobody vouches for the rest.
QByteArray ledgerOf(const QByteArray &language)
{
    return LedgerBuilder().addLanguage(language).build();
}

QString languageOf(PackageServer &source)
{
    const auto accessor = source.getAccessor();
    accessor->load();
    return accessor->languages().join(',');
}

} // namespace

/// PackageServer against a real static server.
class tst_PackageServerNginx : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void wholeCycle();

private:
    /// Polls \a source; the new lines of the log.
    QStringList poll(PackageServer &source);

    ScopedDataLocation m_data;
    std::unique_ptr<NginxServer> m_server;
    QNetworkAccessManager m_manager;
};

void tst_PackageServerNginx::initTestCase()
{
    if (!NginxServer::isInstalled())
        QSKIP("needs nginx and openssl");
    m_server = std::make_unique<NginxServer>();
}

QStringList tst_PackageServerNginx::poll(PackageServer &source)
{
    LogRecorder log("norvak.packageserver");
    source.update();
    [&] { QTRY_VERIFY_WITH_TIMEOUT(!log.lines().isEmpty(), 60000); }();
    return log.lines();
}

void tst_PackageServerNginx::wholeCycle()
{
    // A server that would pack its answer, and then weaken the ETag, has no reason to.
    for (const QString path : {"/", "/gzip/"}) {
        nk::account::Service service("cycle" + path.mid(1, 4), m_server->url(path), &m_manager);
        m_server->addFile("api/v1/ledger", ledgerOf("de") + QByteArray(100000, ' '));
        PackageServer source(&service);
        QSignalSpy updates(&source, &PackageSource::updateRequired);
        QTRY_COMPARE_WITH_TIMEOUT(updates.count(), 1, 60000);
        QCOMPARE(languageOf(source), QString("de"));
        QCOMPARE(poll(source), QStringList({noChanges}));

        m_server->addFile("api/v1/ledger", ledgerOf("fr")); // another size, another ETag
        QVERIFY(poll(source).value(0).contains("Received new ledger with ETag \"\\\""));
        QCOMPARE(updates.count(), 2);
        QCOMPARE(languageOf(source), QString("fr"));
        source.persist();
        QThreadPool::globalInstance()->waitForDone();

        // The next start: what is on disk is confirmed with the ETag that was persisted.
        PackageServer restarted(&service);
        QSignalSpy news(&restarted, &PackageSource::updateRequired);
        QCOMPARE(poll(restarted), QStringList({noChanges}));
        m_server->kill();
        QCOMPARE(
            poll(restarted), QStringList({"critical: Ledger update failed with status 0 \"\""}));
        QCOMPARE(languageOf(restarted), QString("fr"));
        m_server->restart();
        QCOMPARE(poll(restarted), QStringList({noChanges}));
        QCOMPARE(news.count(), 0);
    }
}

QTEST_GUILESS_MAIN(tst_PackageServerNginx)
#include "tst_packageservernginx.moc"

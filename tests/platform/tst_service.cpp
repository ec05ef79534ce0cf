// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/httptestserver.h"

#include <norvakaccount/service.h>

#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QtTest>

using namespace nk;
using namespace nk::account;
using namespace nk::pm::test;

class tst_Service : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void becomesAvailableInTheNextTurn();
    void resolvesAgainstItsDirectory();
    void tokenGoesToTheOwnOriginOnly();
    void tokenCantSmuggleHeaders();
    void survivesItsManager();

private:
    static int codeOf(GetRequest *request)
    {
        int code = -1;
        request->setSuppressErrors(true);
        connect(request, &Request::finished, request, [&] { code = request->responseCode(); });
        return QTest::qWaitFor([&] { return code >= 0; }, 60000) ? code : -1;
    }

    QNetworkAccessManager m_manager;
};

void tst_Service::becomesAvailableInTheNextTurn()
{
    Service service("uuid", QUrl("http://127.0.0.1/"), &m_manager);

    QVector<Service::Status> seen;
    connect(&service, &Service::statusChanged, this, [&] { seen.append(service.status()); });
    service.enable();
    service.enable();
    QCOMPARE(service.status(), Service::Connecting);
    QCoreApplication::processEvents();
    QCOMPARE(service.status(), Service::Available);
    service.enable();
    QCoreApplication::processEvents();
    QCOMPARE(seen, (QVector<Service::Status>{Service::Connecting, Service::Available}));
}

void tst_Service::resolvesAgainstItsDirectory()
{
    const auto ledgerOf = [&](const char *base) {
        const Service service("uuid", QUrl(base), &m_manager);
        return service.createRequest(QUrl("./api/v1/ledger")).url().toString();
    };
    QCOMPARE(ledgerOf("https://a.example"), QString("https://a.example/api/v1/ledger"));
    QCOMPARE(ledgerOf("https://a.example/dir/"), QString("https://a.example/dir/api/v1/ledger"));
    QCOMPARE(ledgerOf("https://a.example/dir"), QString("https://a.example/dir/api/v1/ledger"));
}

void tst_Service::tokenGoesToTheOwnOriginOnly()
{
    HttpTestServer own(HttpTestAnswer::ok("own"));
    HttpTestServer other(HttpTestAnswer::ok("other"));
    Service service("uuid", own.url("/base/"), &m_manager);
    service.setAccessToken("secret");
    QNetworkRequest turned = service.createRequest(QUrl("./file"));
    turned.setUrl(other.url());

    QCOMPARE(codeOf(service.getRequest(QUrl("./file"))), 200);
    QCOMPARE(codeOf(service.getRequest(QNetworkRequest(own.url("/by/hand")))), 200);
    QCOMPARE(codeOf(service.getRequest(other.url())), 200);
    QCOMPARE(codeOf(service.getRequest(turned)), 200);
    own.setHandler(
        [&](const HttpTestRequest &) { return HttpTestAnswer::redirect(other.url().toEncoded()); });
    QCOMPARE(codeOf(service.getRequest(QUrl("./file"))), 200);

    QCOMPARE(own.requestCount(), 3);
    for (const HttpTestRequest &request : own.requests())
        QCOMPARE(request.headers.value("authorization"), QByteArray("Bearer secret"));
    QCOMPARE(other.requestCount(), 3);
    for (const HttpTestRequest &request : other.requests())
        QVERIFY(!request.headers.contains("authorization"));
}

void tst_Service::tokenCantSmuggleHeaders()
{
    Service service("uuid", QUrl("http://127.0.0.1/"), &m_manager);
    service.setAccessToken("secret\r\nX-Evil: 1");
    QVERIFY(!service.createRequest(QUrl("./file")).hasRawHeader("Authorization"));
    service.setAccessToken("secret");
    QVERIFY(service.createRequest(QUrl("./file")).hasRawHeader("Authorization"));
    service.setAccessToken({});
    QVERIFY(!service.createRequest(QUrl("./file")).hasRawHeader("Authorization"));
}

void tst_Service::survivesItsManager()
{
    auto manager = std::make_unique<QNetworkAccessManager>();
    const Service service("uuid", QUrl("http://127.0.0.1/"), manager.get());
    manager.reset();
    QCOMPARE(codeOf(service.getRequest(QUrl("./file"))), 0);
}

QTEST_GUILESS_MAIN(tst_Service)

#include "tst_service.moc"

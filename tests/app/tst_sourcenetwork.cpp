// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "network/sourcenetwork.h"
#include "support/httptestserver.h"

#include <QSignalSpy>
#include <QtTest>
#include <norvak/request.h>

using namespace nk::pm::test;
using nk::pm::app::SourceNetwork;

class TestSourceNetwork : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tellsHowAPollWent_data();
    void tellsHowAPollWent();
};

void TestSourceNetwork::tellsHowAPollWent_data()
{
    QTest::addColumn<HttpTestAnswer>("answer"); // to the poll; all else is found
    QTest::addColumn<QString>("fault");

    const QString refused = "can't be followed";
    QTest::newRow("answered") << HttpTestAnswer::ok("all") << QString();
    QTest::newRow("answered in chunks")
        << HttpTestAnswer::chunked(QByteArray(300000, 'x'), 1000).inPieces(50000) << QString();
    QTest::newRow("nothing") << HttpTestAnswer::ok({}) << "with nothing";
    QTest::newRow("a part that wasn't asked for") << HttpTestAnswer::of(206, "all") << "status 206";
    QTest::newRow("no change that wasn't asked for")
        << HttpTestAnswer::of(304) << "isn't to what was asked";
    QTest::newRow("without an end")
        << HttpTestAnswer::raw("HTTP/1.0 200 OK\r\n\r\nall").cutAt(100) << "where it ends";
    QTest::newRow("too large") << HttpTestAnswer::raw(
        "HTTP/1.1 200 OK\r\nContent-Length: 2000000000\r\n\r\n")
                               << "too large";
    QTest::newRow("cut off") << HttpTestAnswer::ok("all").cutAt(10) << "closed";
    QTest::newRow("status") << HttpTestAnswer::of(503) << "status 503";
    QTest::newRow("moved to an address of another form")
        << HttpTestAnswer::redirect("/blobs/17") << QString();
    QTest::newRow("moved round in a circle") << HttpTestAnswer::redirect("/poll") << "too often";
    QTest::newRow("moved out of HTTP") << HttpTestAnswer::redirect("ftp://127.0.0.1/") << refused;
    QTest::newRow("moved nowhere") << HttpTestAnswer::of(302) << "status 302";
}

void TestSourceNetwork::tellsHowAPollWent()
{
    QFETCH(HttpTestAnswer, answer);
    QFETCH(QString, fault);
    HttpTestServer server([&](const HttpTestRequest &request) {
        return request.target.endsWith("/poll") ? answer : HttpTestAnswer::ok("all");
    });
    SourceNetwork network(server.url("/"), "/poll");
    const QSignalSpy polled(&network, &SourceNetwork::polled);
    const auto request =
        new nk::GetRequest(QNetworkRequest(server.url("/poll")), &network, &network);
    request->setSuppressErrors(true);

    QTRY_COMPARE(polled.count(), 1);
    QVERIFY(network.hasPolled());
    QVERIFY2(network.fault().contains(fault), qPrintable(network.fault()));
    QCOMPARE(network.fault().isEmpty(), fault.isEmpty());
    QCOMPARE(network.lastAnswer().isValid(), fault.isEmpty());
}

QTEST_GUILESS_MAIN(TestSourceNetwork)
#include "tst_sourcenetwork.moc"

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
    QTest::newRow("cut off") << HttpTestAnswer::ok("all").cutAt(10) << "closed";
    QTest::newRow("status") << HttpTestAnswer::of(503) << "status 503";
    QTest::newRow("moved to an address of another form")
        << HttpTestAnswer::redirect("/blobs/17") << QString();
    QTest::newRow("moved round in a circle") << HttpTestAnswer::redirect("/poll") << refused;
    QTest::newRow("moved out of HTTP") << HttpTestAnswer::redirect("ftp://127.0.0.1/") << refused;
    QTest::newRow("moved nowhere") << HttpTestAnswer::of(302) << refused;
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

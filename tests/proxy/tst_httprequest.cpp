// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "proxy/httprequest.h"

#include <QtTest>

using nk::pm::HttpRequest;

class TestHttpRequest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestLine_data();
    void requestLine();
    void faultKeepsMethodAndTarget();
    void headerLine_data();
    void headerLine();
    void headersOutliveTheRequestAndRepeatsReplace();
    void headerFloodIsBounded();
};

void TestHttpRequest::requestLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("fault");
    QTest::addColumn<int>("method");
    QTest::addColumn<QByteArray>("target");

    const auto accepted = [](const char *name, const char *line, int method, const char *target) {
        QTest::newRow(name) << QByteArray(line) << int(HttpRequest::NoFault) << method
                            << QByteArray(target);
    };
    accepted("get", "GET /t/a.png HTTP/1.1\r\n", HttpRequest::Get, "/t/a.png");
    accepted("head", "HEAD /t/a.png HTTP/1.1\r\n", HttpRequest::Head, "/t/a.png");
    accepted("bare line feed", "GET / HTTP/1.1\n", HttpRequest::Get, "/");
    accepted("without line end", "GET / HTTP/1.1", HttpRequest::Get, "/");
    accepted("white space around", " \t GET / HTTP/1.1 \t\r\n", HttpRequest::Get, "/");
    accepted("target with blanks", "GET /a b  c HTTP/1.1\r\n", HttpRequest::Get, "/a b  c");
    accepted("target of blanks", "GET    HTTP/1.1\r\n", HttpRequest::Get, "  ");
    accepted("empty target", "GET  HTTP/1.1\r\n", HttpRequest::Get, "");
    accepted("target ends in a blank", "GET /a  HTTP/1.1\r\n", HttpRequest::Get, "/a ");
    accepted("raw bytes", "GET /\xc3\xa4\xff HTTP/1.1\r\n", HttpRequest::Get, "/\xc3\xa4\xff");

    const auto refused = [](const char *name, const QByteArray &line, HttpRequest::Fault fault) {
        QTest::newRow(name) << line << int(fault) << int(HttpRequest::Get) << QByteArray();
    };
    refused("nothing", "", HttpRequest::Malformed);
    refused("empty line", "\r\n", HttpRequest::Malformed);
    refused("two parts", "GET HTTP/1.1\r\n", HttpRequest::Malformed);
    refused("no version", "GET / \r\n", HttpRequest::Malformed);
    refused("version 1.0", "GET / HTTP/1.0\r\n", HttpRequest::Malformed);
    refused("lower-case version", "GET / http/1.1\r\n", HttpRequest::Malformed);
    refused("version with a tail", "GET / HTTP/1.1x\r\n", HttpRequest::Malformed);
    refused("tabs don't separate", "GET\t/\tHTTP/1.1\r\n", HttpRequest::Malformed);
    refused("version judged before method", "POST / HTTP/1.0\r\n", HttpRequest::Malformed);
    refused("other method", "POST / HTTP/1.1\r\n", HttpRequest::UnknownMethod);
    refused("lower-case method", "get / HTTP/1.1\r\n", HttpRequest::UnknownMethod);
    refused("method with a tail", "GETS / HTTP/1.1\r\n", HttpRequest::UnknownMethod);
    refused("zero byte", QByteArray("GET\0 / HTTP/1.1\r\n", 17), HttpRequest::UnknownMethod);
}

void TestHttpRequest::requestLine()
{
    QFETCH(QByteArray, line);
    HttpRequest request;
    QTEST(int(request.readRequestLine(line)), "fault");
    QTEST(int(request.method()), "method");
    QTEST(request.target(), "target");
}

void TestHttpRequest::faultKeepsMethodAndTarget()
{
    HttpRequest request;
    request.readRequestLine("HEAD /first HTTP/1.1\r\n");
    request.readRequestLine("GET /second HTTP/1.0\r\n");
    request.readRequestLine("PUT /third HTTP/1.1\r\n");
    QCOMPARE(request.method(), HttpRequest::Head);
    QCOMPARE(request.target(), QByteArray("/first"));
}

void TestHttpRequest::headerLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<bool>("end");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("value");

    const auto row = [](const char *name, const char *line, const char *key, const char *value) {
        QTest::newRow(name) << QByteArray(line) << false << QByteArray(key) << QByteArray(value);
    };
    QTest::newRow("CR LF ends") << QByteArray("\r\n") << true << QByteArray() << QByteArray();
    row("bare line feed is junk", "\n", nullptr, nullptr);
    row("blank line is junk", " \r\n", nullptr, nullptr);
    row("no colon is junk", "Host localhost\r\n", nullptr, nullptr);
    row("plain", "Host: localhost\r\n", "Host", "localhost");
    row("value trimmed, name not", " Host \t:\t a b \r\n", " Host \t", "a b");
    row("first colon separates", "Host: localhost:80\r\n", "Host", "localhost:80");
    row("empty name", ": x\r\n", "", "x");
    row("empty value", "X:\r\n", "X", "");
}

void TestHttpRequest::headerLine()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, name);
    HttpRequest request;
    QTEST(request.readHeaderLine(line), "end");
    QCOMPARE(request.headers().size(), name.isNull() ? 0 : 1);
    QTEST(request.headers().value(name), "value");
}

void TestHttpRequest::headersOutliveTheRequestAndRepeatsReplace()
{
    HttpRequest request;
    request.readHeaderLine("A: 1\r\n");
    request.readHeaderLine("a: 2\r\n");
    request.readHeaderLine("\r\n");
    request.readRequestLine("GET / HTTP/1.1\r\n");
    request.readHeaderLine("A: 3\r\n");
    QCOMPARE(request.headers(), (QHash<QByteArray, QByteArray>{{"A", "3"}, {"a", "2"}}));
}

void TestHttpRequest::headerFloodIsBounded()
{
    HttpRequest request;
    for (int i = 0; i < 10 * HttpRequest::maxHeaders; ++i)
        request.readHeaderLine("X-" + QByteArray::number(i) + ": 1\r\n");
    QCOMPARE(request.headers().size(), HttpRequest::maxHeaders);
    request.readHeaderLine("X-0: 2\r\n");
    QCOMPARE(request.headers().value("X-0"), QByteArray("2"));
}

QTEST_GUILESS_MAIN(TestHttpRequest)
#include "tst_httprequest.moc"

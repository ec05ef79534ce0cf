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
    void refusedLineChangesNothing();
    void headers();
    void hostOfThisMachine();
    void requestLine();
};

void TestHttpRequest::requestLine_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("target");
    const auto row = [](const char *name, const char *line, const char *target) {
        QTest::newRow(name) << QByteArray(line) << QByteArray(target);
    };
    row("bare line feed", "GET / HTTP/1.1\n", "/");
    row("without line end", "GET / HTTP/1.1", "/");
    row("white space around", " \t GET / HTTP/1.1 \t\r\n", "/");
    row("target with blanks", "GET /a b  c HTTP/1.1\r\n", "/a b  c");
    row("target of blanks", "GET    HTTP/1.1\r\n", "  ");
    row("empty target", "GET  HTTP/1.1\r\n", "");
    row("target ends in a blank", "GET /a  HTTP/1.1\r\n", "/a ");
    row("raw bytes", "GET /\xc3\xa4\xff HTTP/1.1\r\n", "/\xc3\xa4\xff");
}

void TestHttpRequest::requestLine()
{
    QFETCH(QByteArray, line);
    HttpRequest request;
    QCOMPARE(request.readRequestLine(line), HttpRequest::NoFault);
    QCOMPARE(request.method(), HttpRequest::Get);
    QTEST(request.target(), "target");
}

void TestHttpRequest::refusedLineChangesNothing()
{
    HttpRequest request;
    request.readRequestLine("HEAD /first HTTP/1.1\r\n");
    for (const char *line :
         {"", "\r\n", "GET HTTP/1.1\r\n", "GET / \r\n", "GET / HTTP/1.0\r\n", "GET / http/1.1\r\n",
          "GET / HTTP/1.1x\r\n", "GET\t/\tHTTP/1.1\r\n", "POST / HTTP/1.0\r\n"})
        QVERIFY2(request.readRequestLine(line) == HttpRequest::Malformed, line);
    for (const QByteArray &line :
         {QByteArray("POST / HTTP/1.1\r\n"), QByteArray("get / HTTP/1.1\r\n"),
          QByteArray("GETS / HTTP/1.1\r\n"), QByteArray("GET\0 / HTTP/1.1\r\n", 17)})
        QVERIFY2(request.readRequestLine(line) == HttpRequest::UnknownMethod, line.constData());
    QCOMPARE(request.method(), HttpRequest::Head);
    QCOMPARE(request.target(), QByteArray("/first"));
}

void TestHttpRequest::headers()
{
    using Headers = QHash<QByteArray, QByteArray>;
    HttpRequest request;
    for (const char *junk : {"\n", " \r\n", "Host localhost\r\n"})
        QVERIFY2(!request.readHeaderLine(junk), junk);
    QCOMPARE(request.headers(), Headers());
    for (const char *line : {" Host \t:\t a b \r\n", "Host: localhost:80\r\n", ": x\r\n", "X:\r\n"})
        QVERIFY2(!request.readHeaderLine(line), line);
    const Headers first{{" Host \t", "a b"}, {"Host", "localhost:80"}, {"", "x"}, {"X", ""}};
    QCOMPARE(request.headers(), first);
    QVERIFY(request.readHeaderLine("\r\n"));

    // They outlive their request; repeated ones, compared by case, are replaced.
    request.readRequestLine("GET / HTTP/1.1\r\n");
    request.readHeaderLine("X: 2\r\n");
    request.readHeaderLine("x: 3\r\n");
    QCOMPARE(request.headers().size(), 5);
    QCOMPARE(request.headers().value("X"), QByteArray("2"));

    for (int i = 0; i < 10 * HttpRequest::maxHeaders; ++i)
        request.readHeaderLine("X-" + QByteArray::number(i) + ": 1\r\n");
    QCOMPARE(request.headers().size(), HttpRequest::maxHeaders);
    request.readHeaderLine("X: 4\r\n");
    QCOMPARE(request.headers().value("X"), QByteArray("4"));
}

void TestHttpRequest::hostOfThisMachine()
{
    const auto isForLoopback = [](const QByteArrayList &hosts) {
        HttpRequest request;
        for (const QByteArray &host : hosts)
            request.readHeaderLine(host + "\r\n");
        return request.isForLoopback();
    };
    for (const char *host : {"localhost", "LOCALHOST:80", "127.0.0.1:8080", "127.9.9.9", "[::1]:1"})
        QVERIFY2(isForLoopback({QByteArray("hOsT: ") + host}), host);
    for (const char *host :
         {"", "evil.org", "localhost.evil.org", "evil.org:80", "10.0.0.1", "user@localhost", "::1",
          "localhost/evil", "evil.org, localhost", "[::2]", "localhost:x"})
        QVERIFY2(!isForLoopback({QByteArray("Host: ") + host}), host);
    QVERIFY(!isForLoopback({}));
    QVERIFY(!isForLoopback({"Host: localhost", "host: evil.org"}));
}

QTEST_GUILESS_MAIN(TestHttpRequest)
#include "tst_httprequest.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "picturenetwork.h"
#include "support/directoryproxy.h"
#include "support/testfiles.h"

#include <QDir>
#include <QImage>
#include <QProcess>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickView>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QtTest>

using nk::pm::test::DirectoryProxy;
using nk::pm::test::readFile;
using nk::pm::test::writeFile;

namespace {

constexpr int patience = 120000; // ms

struct Finished
{
    int exitCode = -1;
    QString output;
    QString errors;
};

/// Runs a client to its end, with the proxy serving it on this thread.
Finished run(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, patience))
        process.kill();
    process.waitForFinished();
    return {
        process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        QString::fromUtf8(process.readAllStandardOutput()),
        QString::fromUtf8(process.readAllStandardError())};
}

bool isInstalled(const QString &program)
{
    return !QStandardPaths::findExecutable(program).isEmpty();
}

} // namespace

/// Programs that weren't made for the proxy, against it.
class TestFileProxyClients : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void curlKeepsItsConnection();
    void curlIsRefused();
    void twoHundredConnectionsAtOnce();
    void wrkFindsNoFault();
    void quickImages();

private:
    QString addFile(const QString &name, const QByteArray &content) const;
    QString url(const QString &name) const { return m_proxy->url(name).toString(); }
    QString curl(const QStringList &arguments) const;

    QScopedPointer<QTemporaryDir> m_directory;
    QScopedPointer<DirectoryProxy> m_proxy;
};

void TestFileProxyClients::initTestCase()
{
    if (!isInstalled("curl"))
        QSKIP("curl isn't installed");
}

void TestFileProxyClients::init()
{
    m_directory.reset(new QTemporaryDir);
    QVERIFY(QDir(m_directory->path()).mkdir("served"));
    m_proxy.reset(new DirectoryProxy(m_directory->filePath("served")));
}

void TestFileProxyClients::cleanup()
{
    if (m_proxy)
        QTRY_COMPARE(m_proxy->server()->findChildren<QTcpSocket *>().size(), 0);
    m_proxy.reset();
}

QString TestFileProxyClients::addFile(const QString &name, const QByteArray &content) const
{
    const QString path = m_directory->filePath("served/" + name);
    writeFile(path, content);
    return path;
}

/// What curl says with these arguments.
QString TestFileProxyClients::curl(const QStringList &arguments) const
{
    const Finished curl = run("curl", QStringList{"--silent", "--show-error"} + arguments);
    return curl.exitCode == 0 ? curl.output : curl.errors;
}

void TestFileProxyClients::curlKeepsItsConnection()
{
    const QByteArray large(3 * 1024 * 1024 + 1, 'l');
    addFile("large", large);
    addFile("small", "small\n");
    addFile("empty", "");
    QStringList arguments{"--write-out", "%{http_code} %{num_connects}\n"};
    for (const char *name : {"large", "small", "empty", "small"})
        arguments << url(name) << "-o" << m_directory->filePath(QString("got-") + name);
    QCOMPARE(curl(arguments), QString("200 1\n200 0\n200 0\n200 0\n"));
    QVERIFY(readFile(m_directory->filePath("got-large")) == large);
    QCOMPARE(readFile(m_directory->filePath("got-small")), QByteArray("small\n"));
    QCOMPARE(readFile(m_directory->filePath("got-empty")), QByteArray(""));
    QCOMPARE(
        curl({"--head", url("large"), url("small")}),
        QString("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: keep-alive\r\n"
                "Content-Length: 3145729\r\n\r\n"
                "HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: keep-alive\r\n"
                "Content-Length: 6\r\n\r\n"));
}

void TestFileProxyClients::curlIsRefused()
{
    addFile("text", "text");
    const QString large = "@" + addFile("post", QByteArray(8 * 1024 * 1024, 'p'));
    const QPair<QStringList, QString> requests[] = {
        {{"--data-binary", large}, "Method Not Allowed 405"},
        {{"--range", "1-2"}, "text 200"},
    };
    for (const auto &[options, answer] : requests)
        QCOMPARE(
            curl(
                options
                + QStringList{"--header", "Expect:", "--write-out", " %{http_code}", url("text")}),
            answer);
    QCOMPARE(
        curl(
            {"--write-out", " %{http_code} %{num_connects}\n", url("missing"), url("text"),
             url("text"), url("text")}),
        QString("Not Found 404 1\nBad Request 400 0\ntext 200 1\ntext 200 0\n"));
}

void TestFileProxyClients::twoHundredConnectionsAtOnce()
{
    const int count = 200;
    QByteArray config;
    for (int i = 0; i < count; ++i) {
        const QString name = QString::number(i);
        addFile(name, name.toLatin1().repeated(1000 * (i % 50)));
        config += "url = \"" + m_proxy->url(name).toEncoded() + "\"\noutput = \""
                  + m_directory->filePath("got-" + name).toUtf8() + "\"\n";
    }
    writeFile(m_directory->filePath("config"), config);

    m_proxy->hold();
    QProcess curl;
    curl.start(
        "curl",
        {"--silent", "--show-error", "--fail", "--parallel", "--parallel-immediate",
         "--parallel-max", QString::number(count), "--config", m_directory->filePath("config")});
    // All of them have asked and none is answered: that takes a connection for each.
    QTRY_COMPARE_WITH_TIMEOUT(m_proxy->heldCount(), count, patience);
    m_proxy->release();
    QTRY_COMPARE_WITH_TIMEOUT(curl.state(), QProcess::NotRunning, patience);
    QCOMPARE(curl.exitCode(), 0);
    for (int i = 0; i < count; ++i) {
        const QByteArray content = QByteArray::number(i).repeated(1000 * (i % 50));
        QVERIFY(readFile(m_directory->filePath(QString("got-%1").arg(i))) == content);
    }
}

void TestFileProxyClients::wrkFindsNoFault()
{
    if (!isInstalled("wrk"))
        QSKIP("wrk isn't installed");
    addFile("page", QByteArray(20000, 'p'));
    const Finished wrk =
        run("wrk", {"-t1", "-c50", "-d1s", "--timeout", "60s", m_proxy->url("page").toString()});
    QCOMPARE(wrk.exitCode, 0);
    QVERIFY2(!wrk.output.contains("Non-2xx"), qPrintable(wrk.output));
    QVERIFY2(!wrk.output.contains("Socket errors"), qPrintable(wrk.output));
    QVERIFY(m_proxy->requestCount() >= 50);
}

void TestFileProxyClients::quickImages()
{
    // More images than a client opens connections, each of a colour of its own; some don't exist.
    const int count = 24;
    QVariantList urls;
    for (int i = 0; i < count; ++i) {
        const QString name = QString("%1.png").arg(i);
        urls += m_proxy->url(name);
        if (i % 4 == 0)
            continue;
        QImage image(10, 10, QImage::Format_RGB32);
        image.fill(QColor(i * 10, 255 - i * 10, 128));
        addFile(name, QByteArray());
        QVERIFY(image.save(m_directory->filePath("served/" + name)));
    }
    writeFile(
        m_directory->filePath("view.qml"), "import QtQuick 2.15\n"
                                           "Row {\n"
                                           "    property int ready: 0\n"
                                           "    property int failed: 0\n"
                                           "    property var urls: []\n"
                                           "    Repeater {\n"
                                           "        model: urls\n"
                                           "        Image { width: 10; height: 10; cache: false; "
                                           "source: modelData; "
                                           "onStatusChanged: if (status == Image.Ready) ++ready; "
                                           "else if (status == Image.Error) ++failed }\n"
                                           "    }\n"
                                           "}\n");
    m_proxy->hold();
    nk::pm::PictureNetworkFactory network;
    QQuickView view;
    view.engine()->setNetworkAccessManagerFactory(&network);
    view.setSource(QUrl::fromLocalFile(m_directory->filePath("view.qml")));
    QVERIFY2(view.rootObject(), "the QML modules aren't installed");
    view.resize(10 * count, 10);
    view.rootObject()->setProperty("urls", urls);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    // Each answer takes its time, so that a connection's next request could come before it.
    QTimer answers;
    connect(&answers, &QTimer::timeout, this, [this] { m_proxy->releaseOne(); });
    answers.start(5);
    QTRY_COMPARE_WITH_TIMEOUT(
        view.rootObject()->property("ready").toInt(), count - count / 4, patience);
    QTRY_COMPARE_WITH_TIMEOUT(view.rootObject()->property("failed").toInt(), count / 4, patience);

    const QSharedPointer<QQuickItemGrabResult> grab = view.rootObject()->grabToImage();
    QVERIFY(grab);
    QTRY_VERIFY(!grab->image().isNull());
    const QImage shown = grab->image();
    for (int i = 0; i < count; ++i) {
        if (i % 4 != 0)
            QCOMPARE(shown.pixelColor(10 * i + 5, 5), QColor(i * 10, 255 - i * 10, 128));
    }

    // The software renderer frees the textures of removed items only with the next frame.
    QSignalSpy frameSpy(&view, &QQuickWindow::frameSwapped);
    view.rootObject()->setProperty("urls", QVariantList());
    QVERIFY(frameSpy.wait(patience));
}

int main(int argc, char **argv)
{
    // Not "offscreen", which never frees its screen.
    qputenv("QT_QPA_PLATFORM", "minimal");
    qputenv("QT_QUICK_BACKEND", "software");
    const QGuiApplication application(argc, argv);
    TestFileProxyClients test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_fileproxyclients.moc"

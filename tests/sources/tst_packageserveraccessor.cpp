// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/packageinstaller.h"
#include "proxy/fileproxyconnection.h"
#include "proxy/fileproxyserver.h"
#include "sources/packageserveraccessor.h"
#include "support/columns.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QNetworkReply>
#include <norvak/request.h>

#include <QtTest>

#include <algorithm>
#include <atomic>
#include <thread>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

using Accessor = std::unique_ptr<PackageServerAccessor>;

/// One package "pkg" with the files a.txt ("alpha") and deep/b.txt ("beta").
LedgerBuilder onePackage()
{
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(
        "pkg", "model:part", R"({"type":"x","name":"Alpha"})",
        {{"a.txt", "alpha"}, {"deep/b.txt", "beta"}});
    return builder;
}

Accessor loaded(const LedgerBuilder &builder, nk::account::Service *service = nullptr)
{
    auto accessor =
        std::make_unique<PackageServerAccessor>(service, builder.build(), builder.trustKey());
    accessor->load();
    return accessor;
}

void storeFile(const QByteArray &content)
{
    QScopedPointer<FileStoreTarget> target(
        FileStore::instance()->createTarget(fileHash(content).toHex(), QCryptographicHash::Sha224));
    target->write(content);
    QCOMPARE(target->commit(), FileStoreTarget::CommitOk);
}

QString storePath(const QByteArray &content)
{
    return FileStore::instance()->filePath(fileHash(content).toHex());
}

/// A GET by another client than the library's.
class Client
{
public:
    explicit Client(const QUrl &url)
        : m_reply(m_manager.get(QNetworkRequest(url)))
    {}

    /// "200 body", once all is there.
    QByteArray answer()
    {
        QTest::qWaitFor([this] { return m_reply->isFinished(); }, 60000);
        return m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toByteArray() + ' '
               + m_reply->readAll();
    }

private:
    QNetworkAccessManager m_manager;
    QNetworkReply *m_reply;
};

int waitingClients()
{
    const auto connections = FileProxyServer::instance()->findChildren<FileProxyConnection *>();
    return int(std::count_if(connections.begin(), connections.end(), [](const auto *connection) {
        return connection->state() == FileProxyConnection::AwaitingResponse;
    }));
}

} // namespace

class tst_PackageServerAccessor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void describesPackages();
    void tellsWhetherItRefused();
    void readsManifests();
    void describesKeywords();
    void describesLinks();
    void fileUrls();
    void proxyFailures_data();
    void proxyFailures();
    void proxyWithoutServiceOrStore();
    void clientsShareADownload_data();
    void clientsShareADownload();
    void urlsOnAnyThread();
    void identifiersLeadToNoOtherServer();
    void proxyDownloadsOnce();
    void diesOnAnyThread();
    void installsOneOfEqualFiles();

private:
    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;
    QScopedPointer<LogRecorder> m_log;
};

void tst_PackageServerAccessor::init()
{
    m_log.reset(new LogRecorder("norvak.packageserver.ledger"));
    m_store = FileStore::instance();
}

void tst_PackageServerAccessor::cleanup()
{
    m_log.reset();
    QThreadPool::globalInstance()->waitForDone();
    m_store.reset();
    for (const QString &file : filesBelow(m_data.filePath("packages/files")))
        QVERIFY(QFile::remove(file));
}

void tst_PackageServerAccessor::describesPackages()
{
    LedgerBuilder builder = onePackage();
    builder.addPackage(
        "\xc3\xb6ther", "model:part", R"({"type":"x","name":"Alpha"})",
        {{"a.txt", "alpha"}, {"deep/b.txt", "beta"}});
    // Labels are what any server wants them to be; only the key is vouched for.
    builder.addIssuer("Norvak").addPackage("third", "model", "{}", {}, 1);
    Accessor accessor = loaded(builder);
    QCOMPARE(accessor->packageCount(), 3);
    QCOMPARE(accessor->packageInfo(1).type, QString("model:part"));
    QCOMPARE(accessor->packageInfo(1).id, QString::fromUtf8("\xc3\xb6ther"));
    const QString revision = accessor->packageInfo(0).revision;
    QCOMPARE(revision.size(), 32);
    QVERIFY(builder.build().contains(QByteArray::fromBase64(revision.toLatin1())));
    QCOMPARE(accessor->packageInfo(1).revision, revision); // the id isn't signed
    QVERIFY(accessor->packageInfo(2).revision != revision);

    const QByteArray key = accessor->issuerKey(0);
    const QByteArray otherKey = accessor->issuerKey(2);
    QCOMPARE(accessor->issuerKey(1), key);
    QVERIFY(key != otherKey);
    accessor.reset(); // the keys are copies
    for (const QByteArray &each : {key, otherKey}) {
        QVERIFY(nk::crypto::ed25519::PublicKey::fromDER(each).isValid());
        QVERIFY(builder.build().contains(each));
    }
}

void tst_PackageServerAccessor::tellsWhetherItRefused()
{
    LedgerBuilder stranger;
    stranger.addIssuer("Stranger").addPackage("a");
    const QByteArray empty = LedgerBuilder().build();
    const QPair<QByteArray, bool> ledgers[] = {
        {{}, false}, // none yet
        {empty, false},
        {empty.left(80), true},
        {QByteArray(200, 'x'), true},
        {stranger.build(), true},
    };
    for (const auto &[ledger, isRefused] : ledgers) {
        PackageServerAccessor accessor(nullptr, ledger, onePackage().trustKey());
        accessor.load();
        QVERIFY2(accessor.isRefused() == isRefused, ledger.left(30));
        QCOMPARE(accessor.packageCount(), 0);
    }
}

void tst_PackageServerAccessor::readsManifests()
{
    LedgerBuilder builder = onePackage();
    builder.addPackage("broken", "model", "{\"a\":").addPackage("array", "model", "[1]");
    const Accessor accessor = loaded(builder);
    QCOMPARE(accessor->manifest(0), QJsonObject({{"type", "x"}, {"name", "Alpha"}}));
    QVERIFY(m_log->lines("critical").isEmpty());
    QCOMPARE(accessor->manifest(1), QJsonObject());
    QCOMPARE(
        m_log->lines("critical"),
        QStringList({"Package manifest parsing failed: \"unterminated object\""}));
    QCOMPARE(accessor->manifest(2), QJsonObject());
}

void tst_PackageServerAccessor::describesKeywords()
{
    LedgerBuilder builder;
    builder.addLanguage("de").addLanguage("en").addLanguage("fr");
    builder.addKeyword(
        0, "tree",
        {{2, {"arbre"}}, {0, {QByteArray("Baum\0B\xc3\xa4ume\0rest", 16), "Geh\xc3\xb6lz"}}});
    // The later group of a language replaces the earlier.
    builder.addKeyword(3, "1:72", {{1, {"old", "older"}}, {1, {"1:72"}}});
    builder.addKeyword(200, "", {});
    PackageServerAccessor accessor(nullptr, builder.build(), builder.trustKey());
    QCOMPARE(accessor.languages(), QStringList());
    accessor.load();
    QCOMPARE(accessor.languages(), QStringList({"de", "en", "fr"}));
    QCOMPARE(accessor.keywordCount(), 3);
    const KeywordInfo tree = accessor.keywordInfo(0);
    QCOMPARE(tree.id, QString("tree"));
    QCOMPARE(tree.type, 0);
    QStringList texts;
    for (const KeywordString &string : tree.strings)
        texts.append(string.language + '|' + string.string + '|' + string.plural);
    QCOMPARE(
        texts, QStringList(
                   {QString::fromUtf8("de|Baum|B\xc3\xa4ume"),
                    QString::fromUtf8("de|Geh\xc3\xb6lz|"), "fr|arbre|"}));
    // A literal too has the language of its group here.
    QCOMPARE(accessor.keywordInfo(1).strings.size(), 1);
    QCOMPARE(accessor.keywordInfo(1).strings.at(0).string, QString("1:72"));
    QCOMPARE(accessor.keywordInfo(1).strings.at(0).language, QString("en"));
    QCOMPARE(accessor.keywordInfo(2).type, 200);
    QVERIFY(accessor.keywordInfo(2).strings.isEmpty());
}

void tst_PackageServerAccessor::describesLinks()
{
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage("p0").addPackage("p1");
    for (const char *id : {"k0", "k1", "k2"})
        builder.addKeyword(0, id, {});
    builder.addLink(6, 0x00, 0, 1).addLink(6, 0x01, 1, 0).addLink(6, 0x10, 1, 0);
    builder.addLink(6, 0x11, 0, 1).addLink(6, 0x4f, 0, 1).addLink(6, 0x80, 0, 1);
    builder.addLink(6, 0x11, 2, 0).addLink(6, 0x01, 0, 3).addLink(6, 0x00, 2, 2);
    builder.addLink(6, 0x11, 0x80000000, 0xffffffff);
    const Accessor accessor = loaded(builder);
    QStringList links;
    for (int i = 0; i < accessor->linkCount(); ++i) {
        const LinkInfo link = accessor->linkInfo(i);
        links += QString("%1-%2>%3").arg(link.from).arg(link.type).arg(link.to);
    }
    // Any bit of the half counts; an index past the end is an empty end.
    QCOMPARE(
        links, (QStringList{
                   "k0-6>k1", "p1-6>k0", "k1-6>p0", "p0-6>p1", "p0-6>p1", "k0-6>p1", "-6>p0",
                   "p0-6>", "k2-6>k2", "-6>"}));
}

void tst_PackageServerAccessor::fileUrls()
{
    const Accessor accessor = loaded(onePackage());
    QVERIFY(!accessor->fileUrl(0, "c.txt").isValid());
    const QUrl proxied = accessor->fileUrl(0, "deep/b.txt");
    QCOMPARE(proxied.scheme(), QString("http"));
    QVERIFY2(proxied.path().endsWith("/pkg/deep/b.txt"), qPrintable(proxied.toString()));
    storeFile("beta");
    QCOMPARE(accessor->fileUrl(0, "deep/b.txt"), QUrl::fromLocalFile(storePath("beta")));
    QCOMPARE(accessor->fileUrl(0, "a.txt").scheme(), QString("http"));
}

void tst_PackageServerAccessor::identifiersLeadToNoOtherServer()
{
    for (const char *id :
         {"http://other.example/x", "file:///etc", "//other.example/x", "javascript:x"}) {
        LedgerBuilder builder;
        builder.addIssuer("Norvak").addPackage(id, "model", "{}", {{"a.txt", "alpha"}});
        QVERIFY2(!loaded(builder)->fileUrl(0, "a.txt").isValid(), id);
    }
}

void tst_PackageServerAccessor::proxyDownloadsOnce()
{
    LedgerServer server;
    server.addFile("alpha");
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    QCOMPARE(Client(url).answer(), QByteArray("200 alpha"));
    QCOMPARE(Client(url).answer(), QByteArray("200 alpha"));
    QCOMPARE(server.downloads("alpha"), 1);
    QCOMPARE(accessor->fileUrl(0, "a.txt"), QUrl::fromLocalFile(storePath("alpha")));
}

void tst_PackageServerAccessor::proxyFailures_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<HttpTestAnswer>("answer");
    QTest::addColumn<QByteArray>("status");
    const HttpTestAnswer good = HttpTestAnswer::ok("alpha");
    const auto row = [](const QByteArray &status, const char *name, const QString &path,
                        const HttpTestAnswer &answer) {
        QTest::newRow(name) << path << answer << status;
    };
    row("404", "a path of one part", "pkg", good);
    row("404", "an unknown package", "other/a.txt", good);
    row("404", "an unknown file", "pkg/c.txt", good);
    row("404", "a directory", "pkg/deep", good);
    row("403", "what the server keeps back", "pkg/a.txt", HttpTestAnswer::of(403));
    row("500", "another content", "pkg/a.txt", HttpTestAnswer::ok("omega"));
    row("502", "a cut content", "pkg/a.txt", good.cutAt(good.bytes.size() - 1));
}

void tst_PackageServerAccessor::proxyFailures()
{
    QFETCH(QString, path);
    QFETCH(HttpTestAnswer, answer);
    QFETCH(QByteArray, status);
    LedgerServer server;
    server.answerFileWith("alpha", answer);
    const Accessor accessor = loaded(onePackage(), server.service());
    QUrl url = accessor->fileUrl(0, "a.txt");
    url.setPath(url.path().replace("pkg/a.txt", path));
    QCOMPARE(Client(url).answer().left(3), status);
}

void tst_PackageServerAccessor::proxyWithoutServiceOrStore()
{
    LedgerServer server;
    server.addFile("alpha");
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    storeFile("beta");
    const QString directory = QFileInfo(storePath("alpha")).path();
    QVERIFY(QDir().rmdir(directory));
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("Failed to open package storage file"));
    QCOMPARE(Client(url).answer().left(3), QByteArray("500"));
    QVERIFY(QDir().mkdir(directory));
    server.removeService();
    QCOMPARE(Client(url).answer().left(3), QByteArray("502"));
    QCOMPARE(server.downloads("alpha"), 0);
    QCOMPARE(accessor->fileUrl(0, "deep/b.txt"), QUrl::fromLocalFile(storePath("beta")));
}

void tst_PackageServerAccessor::clientsShareADownload_data()
{
    Columns<bool>("fails").row("it comes", false).row("only another server has it", true);
}

/// One download answers all who wait for the file, whoever asked first and whether or not their
/// accessors live; and if it fails, a client of another server is sent there.
void tst_PackageServerAccessor::clientsShareADownload()
{
    QFETCH(bool, fails);
    LedgerServer server;
    LedgerServer other("service-2");
    server.answerFileWith("alpha", HttpTestAnswer::silence());
    other.addFile("alpha");
    Accessor accessor = loaded(onePackage(), server.service());
    Accessor secondAccessor = loaded(onePackage(), other.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    Client first(url);
    QTRY_COMPARE(server.http().heldCount(), 1);
    Client second(url);
    Client third(secondAccessor->fileUrl(0, "a.txt"));
    QTRY_COMPARE(waitingClients(), 3);
    accessor.reset();
    secondAccessor.reset();
    server.http().answerHeld(fails ? HttpTestAnswer::of(404) : HttpTestAnswer::ok("alpha"));
    const QByteArray expected = fails ? "404 Not Found" : "200 alpha";
    QCOMPARE(first.answer(), expected);
    QCOMPARE(second.answer(), expected);
    QCOMPARE(third.answer(), QByteArray("200 alpha"));
    QCOMPARE(server.downloads("alpha"), 1);
    QCOMPARE(other.downloads("alpha"), fails ? 1 : 0);
}

void tst_PackageServerAccessor::urlsOnAnyThread()
{
    const Accessor accessor = loaded(onePackage());
    const QUrl url = accessor->fileUrl(0, "a.txt"); // the first, which registers
    std::atomic_bool isOver{false};
    int wrong = 0;
    std::thread reader([&] {
        while (!isOver)
            wrong += accessor->fileUrl(0, "a.txt") != url;
    });
    for (int i = 0; i < 50; ++i)
        loaded(onePackage())->fileUrl(0, "a.txt");
    isOver = true;
    reader.join();
    QCOMPARE(wrong, 0);
}

void tst_PackageServerAccessor::diesOnAnyThread()
{
    LedgerServer server;
    server.addFile("alpha");
    const auto proxy = FileProxyServer::instance(); // goes on, for another accessor
    Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    std::thread([&] { accessor.reset(); }).join();
    QCOMPARE(Client(url).answer().left(3), QByteArray("404"));
    QCOMPARE(server.downloads("alpha"), 0);
}

void tst_PackageServerAccessor::installsOneOfEqualFiles()
{
    LedgerServer server;
    server.addFile("alpha");
    server.addFile("beta");
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(
        "pkg", "model", "{}",
        {{"b.txt", "alpha"}, {"a.txt", "alpha"}, {"c.txt", "alpha"}, {"d.txt", "beta"}});
    const Accessor accessor = loaded(builder, server.service());
    const auto location = InstallLocationRoot::createLocation().subLocation("t/id");
    const auto installer = accessor->createInstaller(0, location);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(readFile(location.pathToFile("a.txt")), QByteArray("alpha"));
    QCOMPARE(readFile(location.pathToFile("d.txt")), QByteArray("beta"));
    QVERIFY(!location.contains("b.txt") && !location.contains("c.txt"));
    const auto files = accessor->files(0);
    QCOMPARE(files->size(), 2);
    QCOMPARE(files->at(0).name + files->at(1).name, QString("a.txtd.txt"));
    QCOMPARE(files->at(0).size, -1);
    QCOMPARE(files->at(0).digest, QString(fileHash("alpha").toHex()));
    QCOMPARE(server.downloads("alpha"), 1);

    QVERIFY(!accessor->fileDownload(fileHash("gamma").toHex()));
    std::unique_ptr<nk::Request> again(accessor->fileDownload(fileHash("beta").toHex())());
    QSignalSpy finished(again.get(), &nk::Request::finished);
    QVERIFY(finished.wait());
    QCOMPARE(again->rawResponse(), QByteArray("beta"));
}

QTEST_GUILESS_MAIN(tst_PackageServerAccessor)
#include "tst_packageserveraccessor.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/packageinstaller.h"
#include "proxy/fileproxyserver.h"
#include "sources/packageserveraccessor.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QNetworkReply>
#include <QtTest>

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

/// Status and body of a GET; another client than the library's.
class Client : public QNetworkAccessManager
{
public:
    QNetworkReply *start(const QUrl &url)
    {
        QNetworkReply *reply = get(QNetworkRequest(url));
        reply->setParent(&m_replies);
        return reply;
    }
    static int status(QNetworkReply *reply)
    {
        return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    }

private:
    QObject m_replies;
};

} // namespace

class tst_PackageServerAccessor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void startsWithoutALedger();
    void describesPackages();
    void tellsIssuersByTheirKeys();
    void tellsWhetherItRefused_data();
    void tellsWhetherItRefused();
    void readsManifests();
    void describesKeywords();
    void describesLinks_data();
    void describesLinks();
    void languagesComeWithLoading();
    void fileUrls();
    void identifiersLeadToNoOtherServer_data();
    void identifiersLeadToNoOtherServer();
    void proxyDownloadsOnce();
    void proxyAnswers_data();
    void proxyAnswers();
    void proxyAnswersWithoutService();
    void proxyAnswersWhenTheStoreCantBeWritten();
    void requestsForOneFileDownloadEach();
    void downloadOutlivesTheAccessor();
    void diesOnAnyThread();
    void installs();
    void installsOneOfEqualFiles();

private:
    QUrl proxyUrl(const QByteArray &path) const;

    ScopedDataLocation m_data;
    QSharedPointer<FileStore> m_store;
    QScopedPointer<LogRecorder> m_log;
    Client m_client;
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
    QDirIterator it(
        m_data.filePath("packages/files"), QDir::Files | QDir::Hidden,
        QDirIterator::Subdirectories);
    while (it.hasNext())
        QVERIFY(QFile::remove(it.next()));
}

void tst_PackageServerAccessor::startsWithoutALedger()
{
    PackageServerAccessor accessor(nullptr, QByteArray());
    accessor.load();
    QCOMPARE(m_log->lines("critical"), QStringList({"Parsing of package ledger failed"}));
    QCOMPARE(accessor.packageCount(), 0);
    QCOMPARE(accessor.keywordCount(), 0);
    QCOMPARE(accessor.linkCount(), 0);
    QCOMPARE(accessor.languages(), QStringList());
}

void tst_PackageServerAccessor::describesPackages()
{
    LedgerBuilder builder = onePackage();
    builder.addPackage(
        "\xc3\xb6ther", "model:part", R"({"type":"x","name":"Alpha"})",
        {{"a.txt", "alpha"}, {"deep/b.txt", "beta"}});
    builder.addPackage("third");
    const Accessor accessor = loaded(builder);
    QCOMPARE(accessor->packageCount(), 3);
    QCOMPARE(accessor->packageInfo(0).id, QString("pkg"));
    QCOMPARE(accessor->packageInfo(0).type, QString("model:part"));
    QCOMPARE(accessor->packageInfo(1).id, QString::fromUtf8("\xc3\xb6ther"));
    const QString revision = accessor->packageInfo(0).revision;
    QCOMPARE(revision.size(), 32);
    QVERIFY(builder.build().contains(QByteArray::fromBase64(revision.toLatin1())));
    QCOMPARE(accessor->packageInfo(1).revision, revision); // the id isn't signed
    QVERIFY(accessor->packageInfo(2).revision != revision);
}

/// Labels are what any server wants them to be; only the key is vouched for.
void tst_PackageServerAccessor::tellsIssuersByTheirKeys()
{
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addIssuer("Norvak");
    builder.addPackage("a").addPackage("b", "model", "{}", {}, 1).addPackage("c");
    Accessor accessor = loaded(builder);
    const QByteArray key = accessor->issuerKey(0);
    const QByteArray otherKey = accessor->issuerKey(1);
    QCOMPARE(accessor->issuerKey(2), key);
    QVERIFY(key != otherKey);
    accessor.reset(); // the keys are copies
    for (const QByteArray &each : {key, otherKey}) {
        QVERIFY(nk::crypto::ed25519::PublicKey::fromDER(each).isValid());
        QVERIFY(builder.build().contains(each));
    }
}

void tst_PackageServerAccessor::tellsWhetherItRefused_data()
{
    QTest::addColumn<QByteArray>("ledger");
    QTest::addColumn<bool>("refused");
    LedgerBuilder stranger;
    stranger.addIssuer("Stranger").addPackage("a");
    const QByteArray good = LedgerBuilder().build();
    QTest::newRow("none yet") << QByteArray() << false;
    QTest::newRow("an empty one") << good << false;
    QTest::newRow("cut short") << good.left(80) << true;
    QTest::newRow("something else") << QByteArray(200, 'x') << true;
    QTest::newRow("signed by a stranger") << stranger.build() << true;
}

void tst_PackageServerAccessor::tellsWhetherItRefused()
{
    QFETCH(QByteArray, ledger);
    QFETCH(bool, refused);
    PackageServerAccessor accessor(nullptr, ledger, onePackage().trustKey());
    accessor.load();
    QCOMPARE(accessor.isRefused(), refused);
    QCOMPARE(accessor.packageCount(), 0);
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
    builder.addKeyword(3, "1:72", {{1, {"1:72"}}});
    builder.addKeyword(200, "", {});
    const Accessor accessor = loaded(builder);
    QCOMPARE(accessor->keywordCount(), 3);
    const KeywordInfo tree = accessor->keywordInfo(0);
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
    QCOMPARE(accessor->keywordInfo(1).strings.at(0).language, QString("en"));
    QCOMPARE(accessor->keywordInfo(2).type, 200);
    QVERIFY(accessor->keywordInfo(2).strings.isEmpty());
}

void tst_PackageServerAccessor::describesLinks_data()
{
    QTest::addColumn<int>("endKinds");
    QTest::addColumn<quint32>("from");
    QTest::addColumn<quint32>("to");
    QTest::addColumn<QString>("fromId");
    QTest::addColumn<QString>("toId");
    const auto row = [](const char *name, int kinds, quint32 from, quint32 to, const char *fromId,
                        const char *toId) {
        QTest::newRow(name) << kinds << from << to << QString(fromId) << QString(toId);
    };
    row("two keywords", 0x00, 0, 1, "k0", "k1");
    row("package to keyword", 0x01, 1, 0, "p1", "k0");
    row("keyword to package", 0x10, 1, 0, "k1", "p0");
    row("two packages", 0x11, 0, 1, "p0", "p1");
    row("any bit of the half counts", 0x4f, 0, 1, "p0", "p1");
    row("only the high half", 0x80, 0, 1, "k0", "p1");
    row("from past the packages", 0x11, 2, 0, "", "p0");
    row("to past the keywords", 0x01, 0, 3, "p0", "");
    row("to one past the keywords' end", 0x00, 2, 2, "k2", "k2");
    row("indices that read as negative", 0x11, 0x80000000, 0xffffffff, "", "");
}

void tst_PackageServerAccessor::describesLinks()
{
    QFETCH(int, endKinds);
    QFETCH(quint32, from);
    QFETCH(quint32, to);
    QFETCH(QString, fromId);
    QFETCH(QString, toId);
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage("p0").addPackage("p1");
    for (const char *id : {"k0", "k1", "k2"})
        builder.addKeyword(0, id, {});
    builder.addLink(6, endKinds, from, to);
    const Accessor accessor = loaded(builder);
    QCOMPARE(accessor->linkCount(), 1);
    QCOMPARE(accessor->linkInfo(0).type, 6);
    QCOMPARE(accessor->linkInfo(0).from, fromId);
    QCOMPARE(accessor->linkInfo(0).to, toId);
}

void tst_PackageServerAccessor::languagesComeWithLoading()
{
    LedgerBuilder builder;
    builder.addLanguage("fr").addLanguage("de");
    PackageServerAccessor accessor(nullptr, builder.build(), builder.trustKey());
    QCOMPARE(accessor.languages(), QStringList());
    accessor.load();
    QCOMPARE(accessor.languages(), QStringList({"fr", "de"}));
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

void tst_PackageServerAccessor::identifiersLeadToNoOtherServer_data()
{
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("an address") << QByteArray("http://other.example/x");
    QTest::newRow("a local file") << QByteArray("file:///etc");
    QTest::newRow("a host") << QByteArray("//other.example/x");
    QTest::newRow("a scheme alone") << QByteArray("javascript:x");
}

void tst_PackageServerAccessor::identifiersLeadToNoOtherServer()
{
    QFETCH(QByteArray, id);
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(id, "model", "{}", {{"a.txt", "alpha"}});
    const Accessor accessor = loaded(builder);
    QVERIFY(!accessor->fileUrl(0, "a.txt").isValid());
}

void tst_PackageServerAccessor::proxyDownloadsOnce()
{
    LedgerServer server;
    server.addFile("alpha");
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    for (int round = 0; round < 2; ++round) {
        QNetworkReply *reply = m_client.start(url);
        QTRY_VERIFY(reply->isFinished());
        QCOMPARE(Client::status(reply), 200);
        QCOMPARE(reply->readAll(), QByteArray("alpha"));
    }
    QCOMPARE(server.downloads("alpha"), 1);
    QCOMPARE(accessor->fileUrl(0, "a.txt"), QUrl::fromLocalFile(storePath("alpha")));
}

void tst_PackageServerAccessor::proxyAnswers_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<HttpTestAnswer>("answer");
    QTest::addColumn<int>("status");
    const HttpTestAnswer good = HttpTestAnswer::ok("alpha");
    const auto row = [](const char *name, const QString &path, const HttpTestAnswer &answer,
                        int status) { QTest::newRow(name) << path << answer << status; };
    row("a path of one part", "pkg", good, 404);
    row("an unknown package", "other/a.txt", good, 404);
    row("an unknown file", "pkg/c.txt", good, 404);
    row("a directory", "pkg/deep", good, 404);
    row("what the server has not", "pkg/a.txt", HttpTestAnswer::of(404), 404);
    row("what the server keeps back", "pkg/a.txt", HttpTestAnswer::of(403), 403);
    row("a server in trouble", "pkg/a.txt", HttpTestAnswer::of(503), 503);
    row("another content", "pkg/a.txt", HttpTestAnswer::ok("omega"), 500);
    row("a cut content", "pkg/a.txt", good.cutAt(good.bytes.size() - 1), 502);
    row("the file", "pkg/a.txt", good, 200);
}

void tst_PackageServerAccessor::proxyAnswers()
{
    QFETCH(QString, path);
    QFETCH(HttpTestAnswer, answer);
    QFETCH(int, status);
    LedgerServer server;
    server.answerFileWith("alpha", answer);
    const Accessor accessor = loaded(onePackage(), server.service());
    QUrl url = accessor->fileUrl(0, "a.txt");
    url.setPath(url.path().replace("pkg/a.txt", path));
    QNetworkReply *reply = m_client.start(url);
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(Client::status(reply), status);
    QCOMPARE(
        reply->readAll(),
        status == 200 ? QByteArray("alpha")
                      : reply->attribute(QNetworkRequest::HttpReasonPhraseAttribute).toByteArray());
}

void tst_PackageServerAccessor::proxyAnswersWithoutService()
{
    LedgerServer server;
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    storeFile("beta");
    server.removeService();
    QNetworkReply *reply = m_client.start(url);
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(Client::status(reply), 502);
    QCOMPARE(accessor->fileUrl(0, "deep/b.txt"), QUrl::fromLocalFile(storePath("beta")));
}

void tst_PackageServerAccessor::proxyAnswersWhenTheStoreCantBeWritten()
{
    LedgerServer server;
    server.addFile("alpha");
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    const QString directory = QFileInfo(storePath("alpha")).path();
    QVERIFY(QDir().rmdir(directory));
    QTest::ignoreMessage(QtCriticalMsg, QRegularExpression("Failed to open package storage file"));
    QNetworkReply *reply = m_client.start(url);
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(Client::status(reply), 500);
    QCOMPARE(server.downloads("alpha"), 0);
}

void tst_PackageServerAccessor::requestsForOneFileDownloadEach()
{
    LedgerServer server;
    server.answerFileWith("alpha", HttpTestAnswer::silence());
    const Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    QNetworkReply *first = m_client.start(url);
    QTRY_COMPARE(server.http().heldCount(), 1);
    QNetworkReply *second = m_client.start(url);
    QTRY_COMPARE(server.http().heldCount(), 2);
    server.http().answerHeld(HttpTestAnswer::ok("alpha"));
    QTRY_VERIFY(first->isFinished() && second->isFinished());
    QCOMPARE(first->readAll() + second->readAll(), QByteArray("alphaalpha"));
}

void tst_PackageServerAccessor::downloadOutlivesTheAccessor()
{
    LedgerServer server;
    server.answerFileWith("alpha", HttpTestAnswer::silence());
    Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    QNetworkReply *reply = m_client.start(url);
    QTRY_COMPARE(server.http().heldCount(), 1);
    accessor.reset();
    server.http().answerHeld(HttpTestAnswer::ok("alpha"));
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(Client::status(reply), 200);
    QCOMPARE(reply->readAll(), QByteArray("alpha"));
}

void tst_PackageServerAccessor::diesOnAnyThread()
{
    LedgerServer server;
    server.addFile("alpha");
    const auto proxy = FileProxyServer::instance(); // goes on, for another accessor
    Accessor accessor = loaded(onePackage(), server.service());
    const QUrl url = accessor->fileUrl(0, "a.txt");
    std::thread([&] { accessor.reset(); }).join();
    QNetworkReply *reply = m_client.start(url);
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(Client::status(reply), 404);
    QCOMPARE(server.downloads("alpha"), 0);
}

void tst_PackageServerAccessor::installs()
{
    LedgerServer server;
    server.addFile("alpha");
    server.addFile("beta");
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(
        "pkg", "model", "{}", {{"a.txt", "alpha"}, {"b.txt", "beta"}});
    const Accessor accessor = loaded(builder, server.service());
    const auto location = InstallLocationRoot::createLocation().subLocation("t/id");
    const auto installer = accessor->createInstaller(0, location);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(readFile(location.pathToFile("a.txt")), QByteArray("alpha"));
    QCOMPARE(readFile(location.pathToFile("b.txt")), QByteArray("beta"));
}

void tst_PackageServerAccessor::installsOneOfEqualFiles()
{
    LedgerServer server;
    server.addFile("alpha");
    LedgerBuilder builder;
    builder.addIssuer("Norvak").addPackage(
        "pkg", "model", "{}", {{"b.txt", "alpha"}, {"a.txt", "alpha"}, {"c.txt", "alpha"}});
    const Accessor accessor = loaded(builder, server.service());
    const auto location = InstallLocationRoot::createLocation().subLocation("t/id");
    const auto installer = accessor->createInstaller(0, location);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(readFile(location.pathToFile("a.txt")), QByteArray("alpha"));
    QVERIFY(!location.contains("b.txt"));
    QCOMPARE(server.downloads("alpha"), 1);
}

QTEST_GUILESS_MAIN(tst_PackageServerAccessor)
#include "tst_packageserveraccessor.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "closing/closingdown.h"
#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/openfilelimit.h"
#include "install/packageserverinstaller.h"
#include "support/filesizelimit.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <QtTest>
#include <sys/resource.h>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

QString hexDigest(const QByteArray &content)
{
    return fileHash(content).toHex();
}

QStringList entries(const QDir &directory)
{
    return directory.entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

/// The errors as "code message", in their order.
QStringList errorsOf(const PackageInstaller &installer)
{
    QStringList result;
    for (const InstallError &error : installer.errors())
        result.append(QString("%1 %2").arg(error.code).arg(error.message));
    return result;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

} // namespace

/// From a package server into a location, through the store, with everything that can go wrong on
/// the way.
class PackageServerInstallerTest : public QObject
{
    Q_OBJECT

private:
    using Files = QHash<QByteArray, QString>;

    /// Puts \a content on the server, and its digest and \a name into the package.
    void serve(const QString &name, const QByteArray &content)
    {
        serve(name, content, HttpTestAnswer::ok(content));
    }
    /// As serve(), but the server answers with \a answer.
    void serve(const QString &name, const QByteArray &content, const HttpTestAnswer &answer)
    {
        m_server->answerFileWith(content, answer);
        m_files.insert(fileHash(content), name);
    }
    std::unique_ptr<PackageServerInstaller> install()
    {
        return std::make_unique<PackageServerInstaller>(
            m_files, m_server->service(), m_store, m_location);
    }
    static QString downloadError(const QByteArray &content, int code)
    {
        return QString("2 Download of ./api/v1/ledger/%1 failed with code %2")
            .arg(hexDigest(content))
            .arg(code);
    }
    static QString commitError(const QByteArray &content, int result)
    {
        return QString("3 Commit of file %1 (./api/v1/ledger/%1) failed (code %2)")
            .arg(hexDigest(content))
            .arg(result);
    }
    static QString installError(const QString &name, const QByteArray &content)
    {
        return QString("4 Failed to install file %1 (%2)").arg(name, hexDigest(content));
    }
    QStringList storedFiles() const { return filesBelow(m_data.filePath("packages/files")); }

    ScopedDataLocation m_data;
    std::unique_ptr<LedgerServer> m_server;
    QSharedPointer<FileStore> m_store;
    InstallLocation m_location;
    Files m_files;

private Q_SLOTS:
    void init();
    void cleanup();
    void downloadsWhatTheStoreLacks();
    void withoutFilesOrService();
    void failedDownloadsDontStopTheOthers();
    void nothingToWriteTo();
    void brokenAnswersAreFailedDownloads();
    void wrongContentIsReportedOnce();
    void strictStoreWaitsForAnHonestServer();
    void fullDisk();
    void hostileNamesStayInside();
    void destroyedInAnyPhase_data();
    void destroyedInAnyPhase();
    void destroyedWhileCommitting();
    void destroyedWhileCopying();
    void destroyedByItsOwnNews();
    void serviceDiesOnTheWay();
    void manySmallFiles();
};

void PackageServerInstallerTest::init()
{
    m_files.clear();
    m_server = std::make_unique<LedgerServer>();
    m_store = FileStore::instance();
    m_location = InstallLocationRoot::createLocation().subLocation("type/id");
}

void PackageServerInstallerTest::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    diskThreads()->waitForDone();
    m_location = InstallLocation();
    m_store.reset();
    for (const QString &file : storedFiles())
        QVERIFY(QFile::remove(file));
}

void PackageServerInstallerTest::downloadsWhatTheStoreLacks()
{
    const QByteArray large = numberedContent(1, 300000);
    serve("a", "alpha");
    serve("b", large);
    serve("name %1 %2", "");
    auto installer = install();
    QCOMPARE(installer->status(), PackageInstaller::InProgress);
    QSignalSpy spy(installer.get(), &PackageInstaller::statusChanged);
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(spy.count(), 1);
    QCOMPARE(m_server->http().requestCount(), 3);
    QCOMPARE(entries(m_location.directory(false)), (QStringList{"a", "b", "name %1 %2"}));
    QVERIFY(readFile(m_location.pathToFile("b")) == large);
    QVERIFY(installer->findChildren<FileStoreTarget *>().isEmpty());

    serve("c", "gamma");
    m_location = InstallLocationRoot::createLocation();
    installer = install();
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(m_server->http().requestCount(), 4);
    QCOMPARE(
        entries(m_location.directory(false)), (QStringList{".lock", "a", "b", "c", "name %1 %2"}));
}

void PackageServerInstallerTest::withoutFilesOrService()
{
    const auto empty = install();
    QTRY_COMPARE(empty->status(), PackageInstaller::Succeeded);
    QCOMPARE(m_server->http().requestCount(), 0);
    QVERIFY(!m_location.directory(false).exists());

    serve("a", "alpha");
    m_server->removeService();
    const auto installer = install();
    QCOMPARE(installer->status(), PackageInstaller::Failed); // at once
    QCOMPARE(errorsOf(*installer), QStringList("1 No service for package file download"));
}

void PackageServerInstallerTest::failedDownloadsDontStopTheOthers()
{
    serve("good", "alpha");
    serve("missing", "beta", HttpTestAnswer::of(404));
    serve("busy", "gamma", HttpTestAnswer::of(503, "gamma"));
    const auto installer = install();
    QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
    const QStringList errors = errorsOf(*installer);
    QCOMPARE(
        sorted(errors.mid(0, 2)),
        sorted({downloadError("beta", 404), downloadError("gamma", 503)}));
    QCOMPARE(
        sorted(errors.mid(2)),
        sorted({installError("missing", "beta"), installError("busy", "gamma")}));
    QCOMPARE(entries(m_location.directory(false)), QStringList("good"));
    QCOMPARE(storedFiles(), QStringList(m_store->filePath(hexDigest("alpha"))));
}

void PackageServerInstallerTest::brokenAnswersAreFailedDownloads()
{
    const HttpTestAnswer whole = HttpTestAnswer::ok("alpha");
    for (const HttpTestAnswer &answer :
         {whole.cutAt(20), whole.cutAt(whole.bytes.size() - 1),
          HttpTestAnswer::raw("HTTP/1.1 200 OK\r\n\r\nalpha").cutAt(INT_MAX),
          HttpTestAnswer::redirect("/base/api/v1/ledger/" + fileHash("alpha").toHex()),
          HttpTestAnswer::redirect("file:///etc/hostname")}) {
        serve("a", "alpha", answer);
        const auto installer = install();
        QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
        const QStringList errors{downloadError("alpha", 0), installError("a", "alpha")};
        QVERIFY2(errorsOf(*installer) == errors, answer.bytes.constData());
        QCOMPARE(storedFiles(), QStringList());
        QVERIFY(!m_location.contains("a"));
    }
}

void PackageServerInstallerTest::wrongContentIsReportedOnce()
{
    serve("a", "alpha", HttpTestAnswer::ok("alphb"));
    serve("b", "beta", HttpTestAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nbeta"));
    auto installer = install();
    QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
    QCOMPARE(
        sorted(errorsOf(*installer)), sorted({commitError("alpha", 1), commitError("beta", 1)}));
    QCOMPARE(readFile(m_location.pathToFile("a")), QByteArray("alphb"));

    installer = install();
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
    QCOMPARE(m_server->http().requestCount(), 2);
}

void PackageServerInstallerTest::strictStoreWaitsForAnHonestServer()
{
    setStorePolicy(StorePolicy::Strict);
    const QByteArray good = numberedContent(1, 300000);
    QByteArray flipped = good;
    flipped[200000] = char(flipped[200000] ^ 1);
    serve("a", good, HttpTestAnswer::ok(flipped));
    serve("b", "beta", HttpTestAnswer::ok("<html>Welcome to this hotel</html>"));
    for (int attempt = 0; attempt < 2; ++attempt) {
        auto fooled = install();
        QTRY_COMPARE(fooled->status(), PackageInstaller::Failed);
        QCOMPARE(
            sorted(errorsOf(*fooled)), sorted(
                                           {commitError(good, 1), commitError("beta", 1),
                                            installError("a", good), installError("b", "beta")}));
        QCOMPARE(storedFiles(), QStringList());
        QCOMPARE(entries(m_location.directory(false)), QStringList());
    }
    serve("a", good);
    serve("b", "beta");
    auto served = install();
    QTRY_COMPARE(served->status(), PackageInstaller::Succeeded);
    QVERIFY(readFile(m_location.pathToFile("a")) == good);
    QCOMPARE(readFile(m_location.pathToFile("b")), QByteArray("beta"));
    setStorePolicy(StorePolicy::Lenient);
}

void PackageServerInstallerTest::nothingToWriteTo()
{
    const QString directory = QFileInfo(m_store->filePath(hexDigest("alpha"))).path();
    QVERIFY(QDir().rmdir(directory));
    writeFile(directory, "in the way");
    serve("a", "alpha");
    serve("b", "beta");
    m_files.insert("abc", "digest that is too short");
    const auto installer = install();
    QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
    QCOMPARE(
        sorted(errorsOf(*installer)),
        sorted(
            {downloadError("alpha", 0), installError("a", "alpha"),
             "2 Download of ./api/v1/ledger/616263 failed with code 0",
             "4 Failed to install file digest that is too short (616263)"}));
    QCOMPARE(m_server->http().requestCount(), 1);
    QCOMPARE(entries(m_location.directory(false)), QStringList("b"));
}

void PackageServerInstallerTest::fullDisk()
{
    serve("small", "alpha");
    for (const int size : {9000, 500000}) { // seen when it is committed, and while it arrives
        const QByteArray content = numberedContent(1, size);
        const QString name = QString("large %1").arg(size);
        serve(name, content);
        {
            FileSizeLimit limit(5000);
            const auto installer = install();
            QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
            const QString first = size > 9000 ? downloadError(content, 0) : commitError(content, 2);
            QCOMPARE(errorsOf(*installer), (QStringList{first, installError(name, content)}));
        }
        QVERIFY(!m_store->contains(hexDigest(content)));
        const auto again = install();
        QTRY_COMPARE(again->status(), PackageInstaller::Succeeded);
        QVERIFY(readFile(m_location.pathToFile(name)) == content);
    }
    QCOMPARE(storedFiles().size(), 3);
}

void PackageServerInstallerTest::hostileNamesStayInside()
{
    m_location.subLocation("leg").directory(true);
    for (const QString &name :
         {QString("../escaped"), QString("../../../../../../../../tmp/escaped"),
          m_data.filePath("escaped"), QString("x/../../escaped"), QString("."), QString(),
          // What lies below is another package's.
          QString("leg"), QString("leg/escaped")}) {
        serve(name, "alpha");
        const auto installer = install();
        QTRY_COMPARE(installer->status(), PackageInstaller::Failed);
        QCOMPARE(errorsOf(*installer), QStringList(installError(name, "alpha")));
    }
    QCOMPARE(filesBelow(m_data.path()).filter("escaped"), QStringList());
}

void PackageServerInstallerTest::destroyedInAnyPhase_data()
{
    QTest::addColumn<int>("answered");
    QTest::newRow("nothing sent") << -1;
    QTest::newRow("nothing answered") << 0;
    QTest::newRow("one file there") << 1;
    QTest::newRow("committing") << 2;
}

void PackageServerInstallerTest::destroyedInAnyPhase()
{
    QFETCH(int, answered);
    serve("a", "alpha", answered < 1 ? HttpTestAnswer::silence() : HttpTestAnswer::ok("alpha"));
    serve("b", "beta", answered < 2 ? HttpTestAnswer::silence() : HttpTestAnswer::ok("beta"));
    auto installer = install();
    const auto running = [&] { return installer->findChildren<nk::Request *>().size(); };
    QCOMPARE(running(), 2);
    if (answered >= 0)
        QTRY_COMPARE(m_server->http().requestCount(), 2);
    if (answered == 2)
        QTRY_VERIFY(installer->findChild<QFutureWatcherBase *>() || installer->isFinished());
    else
        QTRY_COMPARE(running(), 2 - qMax(0, answered));
    installer.reset();
    QTRY_COMPARE(m_server->http().heldCount(), 0);
    diskThreads()->waitForDone();
    // Commits run to their end, all else left nothing.
    const QStringList stored = storedFiles();
    QCOMPARE(stored.size(), answered < 2 ? 0 : 2);
    for (const QString &path : stored)
        QCOMPARE(path, m_store->filePath(hexDigest(readFile(path))));

    m_server->addFile("alpha");
    m_server->addFile("beta");
    const auto again = install();
    QTRY_COMPARE(again->status(), PackageInstaller::Succeeded);
}

void PackageServerInstallerTest::destroyedWhileCommitting()
{
    serve("a", "alpha");
    auto first = install();
    QSemaphore gate;
    const int threads = diskThreads()->maxThreadCount();
    for (int i = 0; i < threads; ++i)
        diskThreads()->start([&gate] { gate.acquire(); });
    const bool isDownloaded =
        QTest::qWaitFor([&] { return first->findChildren<nk::Request *>().isEmpty(); }, 30000);
    const auto second = install(); // as after a new index
    first.reset();
    gate.release(threads);
    QVERIFY(isDownloaded);
    QTRY_COMPARE(second->status(), PackageInstaller::Succeeded);
    QCOMPARE(m_server->http().requestCount(), 1);
}

void PackageServerInstallerTest::destroyedWhileCopying()
{
    serve("a", "alpha");
    auto installer = install();
    // Nothing else takes the copy job from the pool before the installer is gone.
    QThreadPool *pool = QThreadPool::globalInstance();
    QSemaphore gate;
    for (int i = 0; i < pool->maxThreadCount(); ++i)
        pool->start([&gate] { gate.acquire(); });
    const auto isCopying = [&] {
        const auto watchers = installer->findChildren<QFutureWatcherBase *>();
        return std::any_of(watchers.begin(), watchers.end(), [](QFutureWatcherBase *watcher) {
            return dynamic_cast<QFutureWatcher<QList<InstallError>> *>(watcher);
        });
    };
    const bool wasCopying = QTest::qWaitFor(isCopying, 30000);
    installer.reset();
    gate.release(pool->maxThreadCount());
    pool->waitForDone();
    QVERIFY(wasCopying);
    QCOMPARE(readFile(m_location.pathToFile("a")), QByteArray("alpha"));
}

void PackageServerInstallerTest::destroyedByItsOwnNews()
{
    serve("a", "alpha");
    auto installer = install();
    connect(installer.get(), &PackageInstaller::statusChanged, this, [&] { installer.reset(); });
    QTRY_VERIFY(!installer);
    QVERIFY(m_location.contains("a"));
}

void PackageServerInstallerTest::serviceDiesOnTheWay()
{
    serve("a", "alpha", HttpTestAnswer::silence());
    const auto installer = install();
    QTRY_COMPARE(m_server->http().heldCount(), 1);
    m_server->removeService();
    m_server->http().answerHeld(HttpTestAnswer::ok("alpha"));
    QTRY_COMPARE(installer->status(), PackageInstaller::Succeeded);
}

void PackageServerInstallerTest::manySmallFiles()
{
    const int count = 2000;
    for (int i = 0; i < count; ++i)
        serve(QString("file %1").arg(i), numberedContent(i, 100));
    // As many open files as systems give a process to begin with.
    rlimit previous{};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &previous), 0);
    const rlimit usual{1024, previous.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    auto one = install();
    const auto other = install(); // which waits for what the first downloads, or does it itself
    one.reset();
    QTRY_COMPARE_WITH_TIMEOUT(other->status(), PackageInstaller::Succeeded, 120000);
    rlimit current{};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &current), 0);
    QCOMPARE(current.rlim_cur, usual.rlim_cur);
    QVERIFY(raiseOpenFileLimit());
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &current), 0);
    QCOMPARE(current.rlim_cur, qMin<rlim_t>(current.rlim_max, 65536));
    ::setrlimit(RLIMIT_NOFILE, &previous);
    QCOMPARE(entries(m_location.directory(false)).size(), count);
    QCOMPARE(readFile(m_location.pathToFile("file 1999")), numberedContent(1999, 100));
    QCOMPARE(m_server->manager()->findChildren<nk::Request *>().size(), 0);
}

QTEST_GUILESS_MAIN(PackageServerInstallerTest)

#include "tst_packageserverinstaller.moc"

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "closing/closingdown.h"
#include "index/packageindex.h"
#include "index/packageindexnode.h"
#include "install/stalelocations.h"
#include "repository/packagerepository.h"
#include "sources/couchdbpackagesource.h"
#include "sources/localpackagesource.h"
#include "sources/packageserver.h"
#include "sources/packageserveraccessor.h"
#include "support/httptestserver.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/memorysource.h"
#include "support/programcall.h"
#include "support/testfiles.h"

#include <QNetworkReply>
#include <QtConcurrent>
#include <QtTest>
#include <norvak/locations.h>
#include <norvak/request.h>

#include <cstdio>
#include <cstdlib>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

/// Goes on without end in one of its tables, so that only the end of the application ends a build.
class EndlessAccessor : public MemoryAccessor
{
public:
    EndlessAccessor(const QString &table, QSemaphore &reached)
        : MemoryAccessor(MemoryCatalogue())
        , m_table(table)
        , m_reached(reached)
    {}

    int packageCount() const override { return countOf("packages"); }
    int keywordCount() const override { return countOf("keywords"); }
    int linkCount() const override { return countOf("links"); }
    PackageInfo packageInfo(int) const override { return reached<PackageInfo>(); }
    KeywordInfo keywordInfo(int) const override { return reached<KeywordInfo>(); }
    LinkInfo linkInfo(int) const override { return reached<LinkInfo>(); }

private:
    int countOf(const QString &table) const { return table == m_table ? INT_MAX : 0; }

    template<typename Info>
    Info reached() const
    {
        m_reached.release();
        return Info();
    }

    const QString m_table;
    QSemaphore &m_reached;
};

/// Leaves main() while a pool thread builds an index that never ends by itself.
int runEndlessBuild(int &argc, char **argv)
{
    QSemaphore reached;
    MemorySource source;
    QCoreApplication application(argc, argv);
    source.accessorMaker = [&] {
        return std::make_unique<EndlessAccessor>(application.arguments().value(2), reached);
    };
    auto index = QSharedPointer<PackageIndex>::create();
    index->addSource(&source);
    QtConcurrent::run([index] { index->build(); });
    reached.acquire();
    return 0;
}

constexpr int packageCount = 60;
constexpr int fileSize = 5000; // bytes, the same for all: a half file can be told

/// The file of the package \a number of a ledger.
QByteArray ledgerFileOf(int number)
{
    return numberedContent(number, fileSize);
}

/// Snapshots that were read though the application was closing down.
std::atomic_int lateLoads{0};

class WatchedAccessor : public MemoryAccessor
{
public:
    using MemoryAccessor::MemoryAccessor;
    void load() override { lateLoads += isClosingDown() ? 1 : 0; }
};

/// Looks at the pools when static objects go.
struct Witness
{
    ~Witness()
    {
        if (lateLoads == 0 && diskThreads()->waitForDone(0))
            return;
        std::fputs("jobs went on after the end of the application\n", stderr);
        std::_Exit(3);
    }
} witness;

/// Keeps all threads of \a pool until the application closes down.
void occupy(QThreadPool *pool)
{
    for (int i = 0; i < pool->maxThreadCount(); ++i) {
        pool->start([] {
            while (!isClosingDown())
                QThread::msleep(1);
        });
    }
}

/// A repository with a source of each kind, and the servers behind them.
class Scene
{
public:
    explicit Scene(const QString &catalogue)
        : local(catalogue)
        , polled(server.service())
        , couch([](const HttpTestRequest &request) {
            return HttpTestAnswer::ok(
                request.target.contains("_view") ? QByteArray(
                    R"({"rows":[{"key":["package"],"value":{"_id":"package:couch"}}]})")
                                                 : QByteArray());
        })
        , database(couch.url("/db"), &couchManager)
    {
        LedgerBuilder builder;
        builder.addIssuer("Norvak");
        for (int i = 0; i < packageCount; ++i) {
            server.addFile(ledgerFileOf(i));
            builder.addPackage(
                "signed " + QByteArray::number(i), "signed", "{}", {{"file", ledgerFileOf(i)}});
        }
        const QByteArray ledger = builder.build();
        server.publish(ledger, "\"e\"");
        // The polled ledger is kept, and refused for its trust key; this one is verified.
        signedPackages.accessorMaker = [this, ledger, key = builder.trustKey()] {
            return std::make_unique<PackageServerAccessor>(server.service(), ledger, key);
        };
    }

    /// Comes to \a moment.
    bool reach(const QString &moment)
    {
        if (moment == "behind another job") {
            watched.accessorMaker = [] {
                return std::make_unique<WatchedAccessor>(MemoryCatalogue());
            };
            QThreadPool::globalInstance()->setMaxThreadCount(1);
            occupy(QThreadPool::globalInstance());
            repository.addSource(&watched);
        }
        for (PackageSource *source :
             std::initializer_list<PackageSource *>{&local, &polled, &database, &signedPackages})
            repository.addSource(source);
        if (moment == "queued")
            return true;
        QCoreApplication::processEvents(); // starts the build
        if (moment == "building" || moment == "behind another job")
            return true;
        if (moment == "persisting") {
            const bool hasLedger = isSoon([this] { return news.count() > 0; });
            repository.persistSources();
            return hasLedger;
        }
        if (!isSoon([this] { return changes.count() > 0; }))
            return false;
        if (moment == "committing" || moment == "proxying")
            occupy(diskThreads());
        if (moment == "copying")
            occupy(QThreadPool::globalInstance());
        if (moment == "sweeping")
            sweep();
        if (moment == "proxying")
            return askProxy() && isSoon([this] { return server.downloads(ledgerFileOf(0)) > 0; });
        for (int i = 0; i < packageCount; ++i) {
            repository.packageReference(QString::number(i));
            repository.packageReference(QString("signed %1").arg(i));
        }
        repository.packageReference("couch");
        if (moment == "committing" || moment == "copying")
            return isSoon(
                [this] { return server.manager()->findChildren<QNetworkReply *>().isEmpty(); });
        return true;
    }

    /// All that there is to do, one on top of the other, until somebody ends it.
    void runOn()
    {
        reach("installing");
        if (isOver)
            return;
        sweep();
        askProxy();
        local.update();
        signedPackages.publish();
        QCoreApplication::exec();
    }

    void quit()
    {
        isOver = true;
        QCoreApplication::quit();
    }

private:
    bool isSoon(const std::function<bool()> &is) const
    {
        return QTest::qWaitFor([&] { return isOver || is(); }, 60000);
    }

    bool askProxy()
    {
        const QString id = "signed 0";
        asked = repository.packageIndex(); // its URLs go with it
        const PackageNode *node = asked->getPackage(&id);
        if (!node)
            return false;
        // Not over Qt's own HTTP, whose thread goes on into the end of Qt's static objects.
        new nk::GetRequest(QNetworkRequest(node->fileUrl("file")), &client, &client);
        return true;
    }
    void sweep()
    {
        for (int i = 0; i < 300; ++i)
            writeFile(installRoots() + QString("/old %1/file").arg(i), "content");
        QtConcurrent::run(
            [] { sweepLocations(installRoots(), QDateTime::currentDateTimeUtc().addSecs(1000)); });
    }

    bool isOver = false;
    QSharedPointer<PackageIndex> asked;
    LedgerServer server;
    LocalPackageSource local;
    PackageServer polled;
    HttpTestServer couch;
    QNetworkAccessManager couchManager;
    CouchDBPackageSource database;
    MemorySource signedPackages;
    MemorySource watched;
    QNetworkAccessManager client;
    PackageRepository repository{PackageRepository::PersistSources};
    QSignalSpy news{&polled, &PackageSource::updateRequired};
    QSignalSpy changes{&repository, &PackageRepository::packageIndexChanged};
};

/// The application that ends: the test runs itself with a moment, or a number of milliseconds, a
/// way, a catalogue and a data directory.
int runApplication(int argc, char **argv)
{
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    const QStringList arguments = application->arguments();
    nk::Locations::setDataLocation(arguments.value(5));
    Scene scene(arguments.value(4));
    const bool isExit = arguments.value(3) == "exit()";
    bool isRandom = false;
    const int delay = arguments.value(2).toInt(&isRandom);
    if (isRandom) {
        QTimer::singleShot(delay, [&] { isExit ? std::exit(0) : scene.quit(); });
        scene.runOn();
    } else if (!scene.reach(arguments.value(2))) {
        return 2;
    }
    if (isExit)
        std::exit(0);
    if (arguments.value(3) == "application first")
        application.reset();
    return 0;
}

} // namespace

/// The application may quit at any moment, with jobs at work and with objects alive.
class ExitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void quitsCleanly_data();
    void quitsCleanly();
    void quitsAtRandom();
    void quitsDuringAnEndlessBuild_data();
    void quitsDuringAnEndlessBuild();

private:
    /// Runs this program as the application \a arguments with an empty home.
    static void run(const QStringList &arguments);
    /// The same for one with a data directory, in which then every file is a whole one.
    static void runApplication(const QString &moment, const QString &way);
};

void ExitTest::quitsCleanly_data()
{
    QTest::addColumn<QString>("moment");
    QTest::addColumn<QString>("way");
    for (const QString moment :
         {"queued", "building", "behind another job", "persisting", "installing", "committing",
          "copying", "sweeping", "proxying"}) {
        for (const QString way : {"return", "exit()", "application first"})
            QTest::newRow(qPrintable(moment + ", " + way)) << moment << way;
    }
}

void ExitTest::quitsCleanly()
{
    QFETCH(QString, moment);
    QFETCH(QString, way);
    runApplication(moment, way);
}

void ExitTest::quitsAtRandom()
{
    const int tries = qEnvironmentVariableIsSet("NKPM_HOSTILE") ? 2000 : 6;
    for (int i = 0; i < tries && !QTest::currentTestFailed(); ++i) {
        const int delay = QRandomGenerator::global()->bounded(1500);
        runApplication(QString::number(delay), i % 2 == 0 ? "exit()" : "return");
    }
}

void ExitTest::runApplication(const QString &moment, const QString &way)
{
    QTemporaryDir catalogue;
    QTemporaryDir data;
    for (int i = 0; i < packageCount; ++i) {
        const QString directory = catalogue.filePath(QString("packages/type/%1/").arg(i));
        writeFile(directory + "manifest.json", "{}");
        writeFile(directory + "file", QByteArray(fileSize, 'x'));
    }
    run({"--application", moment, way, catalogue.path(), data.path()});
    const QRegularExpression storeFile("/packages/files/(..)/([0-9a-f]{54})$");
    for (const QString &path : filesBelow(data.path())) {
        const QByteArray content = readFile(path);
        const auto match = storeFile.match(path);
        if (match.hasMatch())
            QCOMPARE(QString(fileHash(content).toHex()), match.captured(1) + match.captured(2));
        else if (path.endsWith("/file") && !path.contains("/old "))
            QVERIFY2(content.size() == fileSize, qPrintable(path));
        QVERIFY2(moment != "committing" || !match.hasMatch(), "a commit began after the end");
    }
}

void ExitTest::quitsDuringAnEndlessBuild_data()
{
    QTest::addColumn<QString>("table");
    for (const char *table : {"packages", "keywords", "links"})
        QTest::newRow(table) << table;
}

void ExitTest::quitsDuringAnEndlessBuild()
{
    QFETCH(QString, table);
    run({"--endless", table});
}

void ExitTest::run(const QStringList &arguments)
{
    QTemporaryDir home;
    const CallResult result = call(
        QCoreApplication::applicationFilePath(), arguments, {},
        {{"HOME", home.path()},
         {"XDG_DATA_HOME", {}},
         // Qt's own network threads leave something behind when the application goes first.
         {"ASAN_OPTIONS", arguments.contains("application first") ? "detect_leaks=0" : nullptr}});
    QVERIFY2(result.exitCode == 0, qPrintable(result.errors));
    // A build that nobody will see makes no directory for itself.
    const auto everything = QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden;
    QCOMPARE(QDir(home.path()).entryList(everything), QStringList());
}

int main(int argc, char **argv)
{
    const QByteArray role(argc > 1 ? argv[1] : "");
    if (role == "--application")
        return runApplication(argc, argv);
    if (role == "--endless")
        return runEndlessBuild(argc, argv);
    QCoreApplication application(argc, argv);
    ExitTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_exit.moc"

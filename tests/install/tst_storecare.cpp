// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "closing/closingdown.h"
#include "install/filecopy.h"
#include "install/filestore.h"
#include "install/installlocationroot.h"
#include "install/packageserverinstaller.h"
#include "install/storecare.h"
#include "install/storecensus.h"
#include "support/ledgerbuilder.h"
#include "support/ledgerserver.h"
#include "support/scopeddatalocation.h"
#include "support/testfiles.h"

#include <norvak/locations.h>
#include <norvak/request.h>

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int fileSize = 1000;

QString digestOf(int number)
{
    return fileHash(numberedContent(number, fileSize)).toHex();
}

/// Asks the package server at \a url for each file.
FileFinder serverAt(const QUrl &url, QNetworkAccessManager *manager)
{
    return [=](const QString &digest) {
        const QUrl file = url.resolved(QUrl("base/api/v1/ledger/" + digest));
        return QVector<FileDownload>{
            [=] { return new nk::GetRequest(QNetworkRequest(file), manager); }};
    };
}

/// The whole of a task.
StoreReport report(StoreCare &care)
{
    if (!QSignalSpy(&care, &StoreCare::finished).wait(60000))
        qFatal("a task has no end");
    return care.report();
}

StoreReport verified()
{
    StoreCare care;
    care.verify();
    return report(care);
}

StoreReport repaired(const FileFinder &finder)
{
    StoreCare care;
    care.repair(finder);
    return report(care);
}

StoreReport cleaned(qint64 size)
{
    StoreCare care;
    care.clean(size);
    return report(care);
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

bool isOneFile(const QString &a, const QString &b)
{
    return fileStatus(a)->identity == fileStatus(b)->identity;
}

} // namespace

/// A store with files that other places share, some of them damaged; looked after by this process
/// and by others, which are killed.
class StoreCareTest : public QObject
{
    Q_OBJECT

private:
    QString stored(int number) const { return m_store->filePath(digestOf(number)); }
    QString installed(int root, int number) const
    {
        return m_roots.at(root).directory(false).filePath(QString::number(number));
    }
    void fill(int count, int rootCount);
    void damage(int number);
    bool isRight(int number) const;
    /// This program as one that looks after the store: see main().
    std::unique_ptr<QProcess> otherProcess(const QString &task) const;
    int wrongFiles(int count) const;

    std::unique_ptr<ScopedDataLocation> m_data;
    std::unique_ptr<LedgerServer> m_server;
    QSharedPointer<FileStore> m_store;
    QVector<InstallLocation> m_roots;

private Q_SLOTS:
    void init();
    void cleanup();
    void oneFlippedByteOfTwoThousandFiles();
    void whatNobodyHasIsMendedLater();
    void cleanTakesTheLongestUnusedFirst();
    void cleanWaitsForARunningInstall();
    void killedAnywhere_data();
    void killedAnywhere();
};

void StoreCareTest::init()
{
    m_data = std::make_unique<ScopedDataLocation>();
    m_server = std::make_unique<LedgerServer>();
    m_store = FileStore::instance();
}

void StoreCareTest::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    diskThreads()->waitForDone();
    m_roots.clear();
    m_store.reset();
    m_data.reset();
}

/// The files 0 to \a count - 1, each installed in every root.
void StoreCareTest::fill(int count, int rootCount)
{
    for (int root = 0; root < rootCount; ++root)
        m_roots.append(InstallLocationRoot::createLocation().subLocation("type/package"));
    for (int i = 0; i < count; ++i) {
        const QByteArray content = numberedContent(i, fileSize);
        m_server->addFile(content);
        writeFile(stored(i), content);
        for (const InstallLocation &root : qAsConst(m_roots))
            QVERIFY(root.installFile(stored(i), QString::number(i)));
    }
}

/// The file stays the same inode, as on a disk that errs and with an editor.
void StoreCareTest::damage(int number)
{
    QFile file(stored(number));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray content = file.readAll();
    content[fileSize / 2] = char(content[fileSize / 2] ^ 1);
    QVERIFY(file.seek(0));
    QCOMPARE(file.write(content), qint64(fileSize));
}

/// In the store, and there in all roots too, as one file.
bool StoreCareTest::isRight(int number) const
{
    if (readFile(stored(number)) != numberedContent(number, fileSize))
        return false;
    for (int root = 0; root < m_roots.size(); ++root) {
        if (!isOneFile(installed(root, number), stored(number)))
            return false;
    }
    return true;
}

int StoreCareTest::wrongFiles(int count) const
{
    int wrong = 0;
    for (int i = 0; i < count; ++i)
        wrong += !isRight(i);
    return wrong;
}

std::unique_ptr<QProcess> StoreCareTest::otherProcess(const QString &task) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(
        QCoreApplication::applicationFilePath(),
        {"look-after", m_data->path(), task, m_server->http().url().toString()});
    return process;
}

void StoreCareTest::oneFlippedByteOfTwoThousandFiles()
{
    fill(2000, 3);
    QVERIFY(verified().isWhole());
    damage(1234);
    writeFile(m_store->filePath("0123456789"), "nobody knows by which algorithm");
    const StoreReport found = verified();
    QCOMPARE(found.damages.size(), 1);
    QCOMPARE(found.damages.first().digest, digestOf(1234));
    const QStringList paths{installed(0, 1234), installed(1, 1234), installed(2, 1234)};
    QCOMPARE(sorted(found.damages.first().damagedPaths), sorted(paths));
    QCOMPARE(found.unknown, QStringList(m_store->filePath("0123456789")));
    QCOMPARE(found.usage.files, 2001);
    QCOMPARE(found.usage.usedBytes, qint64(2000) * fileSize);
    QVERIFY(!found.isWhole());

    // The first server lies.
    HttpTestServer liar(HttpTestAnswer::ok(QByteArray(fileSize, 'x')));
    const StoreReport mended = repaired([&](const QString &digest) {
        return serverAt(liar.url(), m_server->manager())(digest)
               + serverAt(m_server->http().url(), m_server->manager())(digest);
    });
    QVERIFY(mended.isWhole());
    QCOMPARE(mended.damages.size(), 1);
    QCOMPARE(mended.damages.first().state, StoreDamage::Replaced);
    QCOMPARE(sorted(mended.damages.first().mendedPaths), sorted(paths));
    QCOMPARE(liar.requestCount(), 1);
    QCOMPARE(m_server->http().requestCount(), 1);
    QCOMPARE(wrongFiles(2000), 0);
    QVERIFY(verified().damages.isEmpty());
    QCOMPARE(filesBelow(m_store->directory()).size(), 2001);
}

void StoreCareTest::whatNobodyHasIsMendedLater()
{
    fill(5, 2);
    damage(3);
    StoreReport left = repaired({});
    for (int run = 0; run < 3; ++run) { // which change nothing
        QCOMPARE(left.damages.size(), 1);
        QCOMPARE(left.damages.first().state, StoreDamage::Removed);
        QCOMPARE(left.damages.first().damagedPaths.size(), 2);
        QVERIFY(!left.isWhole());
        QVERIFY(!m_store->contains(digestOf(3)));
        left = run % 2 ? repaired({}) : verified();
    }
    // An install brings the file, but lets others' be.
    writeFile(stored(3), numberedContent(3, fileSize));
    QVERIFY(!verified().isWhole());
    QVERIFY(repaired({}).isWhole());
    QCOMPARE(wrongFiles(5), 0);
    // Neither is there anything to do for what is damaged and not installed.
    m_roots.clear();
    QVERIFY(QDir(m_data->filePath("packages/install")).removeRecursively());
    damage(3);
    QVERIFY(repaired({}).isWhole());
    QCOMPARE(filesBelow(m_store->directory()).size(), 4);
}

void StoreCareTest::cleanTakesTheLongestUnusedFirst()
{
    fill(1000, 1);
    m_roots.clear();
    QVERIFY(QFile::remove(
        m_data->filePath("packages/install") + "/"
        + QDir(m_data->filePath("packages/install"))
              .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
              .first()
        + "/type/package/500"));
    const QString leftover = stored(7) + ".XyZ123";
    writeFile(leftover, "a download whose process was killed");
    const StoreReport none = cleaned(1000 * fileSize);
    QCOMPARE(none.removedFiles, 1);
    QVERIFY(!QFile::exists(leftover));
    QCOMPARE(none.usage.files, 1000);
    QCOMPARE(cleaned(0).removedFiles, 1); // the one that isn't in the root, which is young
    QVERIFY(!m_store->contains(digestOf(500)));

    QVERIFY(QDir(m_data->filePath("packages/install")).removeRecursively());
    QVERIFY(hardLink(stored(0), m_data->filePath("used")));
    const StoreReport half = cleaned(500 * fileSize);
    QCOMPARE(half.usage.bytes, qint64(500) * fileSize);
    QVERIFY(m_store->contains(digestOf(0)));
    QCOMPARE(cleaned(0).usage.files, 0);
}

void StoreCareTest::cleanWaitsForARunningInstall()
{
    fill(1, 0);
    const QByteArray slow = "comes late";
    m_server->answerFileWith(slow, HttpTestAnswer::silence());
    PackageServerInstaller installer(
        {{fileHash(numberedContent(0, fileSize)), "a"}, {fileHash(slow), "b"}}, m_server->service(),
        m_store, InstallLocationRoot::createLocation());
    QTRY_COMPARE(m_server->http().heldCount(), 1);
    const auto cleaner = otherProcess("clean");
    QVERIFY(cleaner->waitForReadyRead(30000));
    QVERIFY(!cleaner->waitForFinished(300));
    QVERIFY(m_store->contains(digestOf(0)));
    m_server->http().answerHeld(HttpTestAnswer::ok(slow));
    QTRY_COMPARE(installer.status(), PackageInstaller::Succeeded);
    QTRY_COMPARE_WITH_TIMEOUT(cleaner->state(), QProcess::NotRunning, 30000);
    QCOMPARE(cleaner->exitCode(), 0);
    QVERIFY(!installer.errors().size());
}

void StoreCareTest::killedAnywhere_data()
{
    QTest::addColumn<QString>("task");
    QTest::newRow("repair") << "repair";
    QTest::newRow("clean") << "clean";
}

void StoreCareTest::killedAnywhere()
{
    QFETCH(QString, task);
    const int count = 60;
    const int rounds = qEnvironmentVariableIsSet("NKPM_HOSTILE") ? 100 : 6;
    fill(count, 2);
    for (int round = 0; round < rounds; ++round) {
        for (int i = 0; i < count; i += 3) {
            if (task == "repair")
                damage(i);
            else
                writeFile(
                    m_store->filePath(fileHash(QByteArray::number(i)).toHex()),
                    QByteArray::number(i));
        }
        const auto killed = otherProcess(task);
        QVERIFY(killed->waitForReadyRead(30000));
        QTest::qWait(QRandomGenerator::global()->bounded(60)); // answers its requests meanwhile
        killed->kill();
        QVERIFY(killed->state() == QProcess::NotRunning || killed->waitForFinished());

        if (task == "repair")
            QVERIFY(repaired(serverAt(m_server->http().url(), m_server->manager())).isWhole());
        else
            QCOMPARE(cleaned(0).usage.files, count);
        QCOMPARE(wrongFiles(count), 0);
        QVERIFY(verified().damages.isEmpty());
        // A download's leftover is for clean().
        const QStringList files = filesBelow(m_store->directory());
        QCOMPARE(files.size() - files.filter(".part").size(), count);
        QVERIFY(task == "repair" || files.size() == count);
    }
}

/// "look-after DATA-DIRECTORY repair|clean SERVER": says "began", then does that to the store.
static int lookAfter(const QStringList &arguments)
{
    nk::Locations::setDataLocation(arguments.at(2));
    QNetworkAccessManager manager;
    StoreCare care;
    QObject::connect(&care, &StoreCare::finished, [] { QCoreApplication::quit(); });
    std::puts("began");
    std::fflush(stdout);
    if (arguments.at(3) == "repair")
        care.repair(serverAt(QUrl(arguments.at(4)), &manager));
    else
        care.clean(0);
    QCoreApplication::exec();
    return care.report().outcome == StoreReport::Done ? 0 : 1;
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    if (argc > 4 && QByteArray(argv[1]) == "look-after")
        return lookAfter(application.arguments());
    StoreCareTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_storecare.moc"

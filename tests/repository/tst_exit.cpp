// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "install/localpackageinstaller.h"
#include "repository/packagerepository.h"
#include "sources/localpackagesource.h"
#include "support/memorysource.h"
#include "support/programcall.h"
#include "support/testfiles.h"

#include <QtConcurrent>
#include <QtTest>
#include <norvak/locations.h>

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

/// The application that quits: the test runs itself with these arguments.
int runApplication(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QString moment = application.arguments().value(2);
    const QString catalogue = application.arguments().value(3);
    nk::Locations::setDataLocation(application.arguments().value(4));

    LocalPackageSource source(catalogue);
    PackageRepository repository(PackageRepository::PersistSources);
    repository.addSource(&source);
    if (moment == "queued")
        return 0;
    QCoreApplication::processEvents(); // starts the build
    if (moment == "building")
        return 0;
    if (moment == "exit() while building")
        std::exit(0);
    QSignalSpy spy(&repository, &PackageRepository::packageIndexChanged);
    if (!spy.wait(60000))
        return 2;
    for (int i = 0; i < 200; ++i)
        repository.packageReference(QString::number(i));
    if (moment == "installing")
        return 0;
    if (moment == "exit() while installing")
        std::exit(0);
    return 3;
}

} // namespace

/// The application may quit at any moment, with pool jobs at work and with objects alive.
class ExitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void quitsCleanly_data();
    void quitsCleanly();
    void quitsDuringAnEndlessBuild_data();
    void quitsDuringAnEndlessBuild();

private:
    /// Runs this program as the application \a arguments with an empty home.
    static void run(const QStringList &arguments);
};

void ExitTest::quitsCleanly_data()
{
    QTest::addColumn<QString>("moment");
    for (const char *moment :
         {"queued", "building", "exit() while building", "installing", "exit() while installing"})
        QTest::newRow(moment) << moment;
}

void ExitTest::quitsCleanly()
{
    QFETCH(QString, moment);
    QTemporaryDir catalogue;
    QTemporaryDir data;
    for (int i = 0; i < 200; ++i) {
        const QString directory = catalogue.filePath(QString("packages/type/%1/").arg(i));
        writeFile(directory + "manifest.json", "{}");
        writeFile(directory + "file", "content");
    }
    run({"--application", moment, catalogue.path(), data.path()});
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
        {{"HOME", home.path()}, {"XDG_DATA_HOME", {}}});
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

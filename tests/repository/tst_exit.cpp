// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "install/localpackageinstaller.h"
#include "repository/packagerepository.h"
#include "sources/localpackagesource.h"
#include "support/testfiles.h"

#include <QtTest>
#include <norvak/locations.h>

#include <cstdlib>
#include <cstring>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

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
    QProcess application;
    application.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    application.start(
        QCoreApplication::applicationFilePath(),
        {"--application", moment, catalogue.path(), data.path()});
    QVERIFY(application.waitForFinished(120000));
    QCOMPARE(application.exitStatus(), QProcess::NormalExit);
    QCOMPARE(application.exitCode(), 0);
}

int main(int argc, char **argv)
{
    if (argc > 1 && std::strcmp(argv[1], "--application") == 0)
        return runApplication(argc, argv);
    QCoreApplication application(argc, argv);
    ExitTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_exit.moc"

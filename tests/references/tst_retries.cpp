// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/packageindex.h"
#include "references/retrydelay.h"
#include "referencescene.h"
#include "support/columns.h"
#include "support/logrecorder.h"
#include "support/scopeddatalocation.h"

#include <QAbstractEventDispatcher>
#include <QtTest>

using namespace nk::pm;
using namespace nk::pm::test;

namespace {

constexpr int shortestRetry = 30000; // ms

/// The retries that wait for their time: every single-shot timer of 30 s and more.
QVector<QObject *> armedRetries(QVector<int> *delays = nullptr)
{
    QAbstractEventDispatcher *dispatcher = QAbstractEventDispatcher::instance();
    QVector<QObject *> result;
    for (QObject *child : dispatcher->children()) {
        for (const auto &timer : dispatcher->registeredTimers(child)) {
            if (timer.interval < shortestRetry)
                continue;
            result << child;
            if (delays)
                *delays << timer.interval;
        }
    }
    return result;
}

/// Lets the time of \a retry come.
void fire(QObject *retry)
{
    const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(retry);
    QTimerEvent event(timers.first().timerId);
    QCoreApplication::sendEvent(retry, &event);
}

/// An installer that fails before anybody can listen to it.
struct HastyInstaller : PackageInstaller
{
    explicit HastyInstaller(const InstallLocation &location)
        : PackageInstaller(location)
    {
        addError(1, "no service");
        finish();
    }
};

class HastyAccessor : public MemoryAccessor
{
    using MemoryAccessor::MemoryAccessor;
    std::unique_ptr<PackageInstaller> createInstaller(
        int, const InstallLocation &location) const override
    {
        return std::make_unique<HastyInstaller>(location);
    }
};

} // namespace

/// What a reference does after a failure, and when.
class RetriesTest : public QObject
{
    Q_OBJECT

private:
    ScopedDataLocation m_data;

private Q_SLOTS:
    /// A single-shot timer outlives the object that it was to call.
    void cleanup() { qDeleteAll(armedRetries()); }
    void retryDelayDoubles_data();
    void retryDelayDoubles();
    void failureIsLoggedAndRetriedLater();
    void retryRunsWhileAnotherWorks();
    void delaysGrowUntilSuccess();
    void failureBeforeTheConnection();
    void destroyedDuringAnInstall();
};

void RetriesTest::retryDelayDoubles_data()
{
    Columns<int, qint64>("failures", "delay")
        .row("first", 0, 30000)
        .row("second", 1, 60000)
        .row("fourth", 3, 240000)
        .row("last that doubles", 16, qint64(30000) * 65536)
        .row("past the range of a timer", 17, INT_MAX)
        .row("years later", 1000000, INT_MAX);
}

void RetriesTest::retryDelayDoubles()
{
    QFETCH(int, failures);
    QTEST(qint64(retryDelay(failures).count()), "delay");
}

void RetriesTest::failureIsLoggedAndRetriedLater()
{
    Scene scene;
    scene.source.catalogue.package("p").package("q").linked("p requires q");
    scene.watch("p");
    QVERIFY(scene.publish());
    LogRecorder recorder("norvak.packages");
    scene.source.installer("q")->fail(3, "below");
    QCOMPARE(recorder.lines(), QStringList());
    scene.installer()->fail(2, "above");
    QCOMPARE(
        recorder.lines("critical"),
        (QStringList{"Package install error 2 \"above\"", "Package install error 3 \"below\""}));
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete"}));

    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 1);
    const QSharedPointer<PackageIndex> index = scene.repository->packageIndex();
    fire(retries.first());
    // Silent until the new tree has something to say.
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete"}));
    scene.source.installer("q")->succeed();
    scene.installer()->succeed();
    QCOMPARE(scene.log, (QStringList{"Installing", "Incomplete", "Installed"}));
    QCOMPARE(scene.repository->packageIndex(), index);
}

void RetriesTest::retryRunsWhileAnotherWorks()
{
    Scene scene;
    scene.source.catalogue.package("p");
    PackageReference *reference = scene.watch("p");
    LogRecorder quiet("norvak.packages");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(scene.publish());
        QVERIFY(reference->nextAttempt().isNull());
        scene.installer()->fail(1, "failed");
    }
    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 2);
    fire(retries.first());
    const QPointer<MemoryInstaller> working = scene.installer();
    fire(retries.last());
    QVERIFY(!working.isNull());
    QCOMPARE(scene.installer(), working.data());
    QCOMPARE(reference->status(), PackageReference::Incomplete);
}

void RetriesTest::delaysGrowUntilSuccess()
{
    Scene scene;
    scene.source.catalogue.package("p");
    scene.watch("p");
    QVERIFY(scene.publish());
    LogRecorder quiet("norvak.packages");
    const auto failAndReadDelay = [&] {
        scene.installer()->fail(1, "failed");
        QVector<int> delays;
        const QVector<QObject *> retries = armedRetries(&delays);
        if (retries.size() == 1)
            fire(retries.first());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return delays;
    };
    // The system rounds timers of this length to whole seconds.
    QCOMPARE(failAndReadDelay(), QVector<int>{30000});
    QCOMPARE(failAndReadDelay(), QVector<int>{60000});
    // A new index doesn't start over.
    QVERIFY(scene.publish());
    QCOMPARE(failAndReadDelay(), QVector<int>{120000});
    scene.installer()->succeed();
    QVERIFY(scene.publish());
    QCOMPARE(failAndReadDelay(), QVector<int>{30000});
}

void RetriesTest::failureBeforeTheConnection()
{
    Scene scene;
    scene.source.catalogue.package("p");
    scene.source.accessorMaker = [&scene] {
        return std::make_unique<HastyAccessor>(scene.source.catalogue);
    };
    QVERIFY(scene.publish());
    LogRecorder recorder("norvak.packages");
    const PackageReference *reference = scene.repository->packageReference("p");
    QCOMPARE(reference->status(), PackageReference::Incomplete);
    QCOMPARE(recorder.lines().size(), 1);
    const QVector<QObject *> retries = armedRetries();
    QCOMPARE(retries.size(), 1);
    // The next failure comes before anybody could hear of it: nothing more until the next index.
    fire(retries.first());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(reference->status(), PackageReference::Incomplete);
    QVERIFY(armedRetries().isEmpty());
    QVERIFY(reference->nextAttempt().isNull());
    scene.source.accessorMaker = nullptr;
    QVERIFY(scene.publish());
    QCOMPARE(reference->status(), PackageReference::Installing);
}

void RetriesTest::destroyedDuringAnInstall()
{
    QPointer<MemoryInstaller> installer;
    {
        Scene scene;
        scene.source.catalogue.package("p").package("q").linked("p requires q");
        scene.watch("p");
        QVERIFY(scene.publish());
        LogRecorder quiet("norvak.packages");
        scene.source.installer("q")->fail(1, "failed");
        scene.installer()->fail(1, "failed");
        QVERIFY(scene.publish());
        installer = scene.source.installer("q");
        QVERIFY(!installer.isNull());
        QCOMPARE(armedRetries().size(), 1);
    }
    QVERIFY(installer.isNull());
    // What still waits has nobody to call.
    for (QObject *retry : armedRetries())
        fire(retry);
}

QTEST_GUILESS_MAIN(RetriesTest)
#include "tst_retries.moc"

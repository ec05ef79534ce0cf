// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "closing/closingdown.h"

#include <QCoreApplication>
#include <QThread>
#include <QThreadPool>

#include <atomic>

namespace nk::pm {

namespace {

// A device makes durable together what several threads wait for at the same time.
constexpr int diskThreadCount = 8;

std::atomic_bool isEnding{false};
std::atomic_bool isRoutineAdded{false};

void endJobs()
{
    isEnding = true;
    // Gone together with a QCoreApplication, whose destructor waited.
    if (QThreadPool *pool = QThreadPool::globalInstance())
        pool->waitForDone();
    diskThreads()->waitForDone();
}

/// Lives as long as its thread. exit() destroys the objects of the thread that calls it before any
/// static one: nothing that a job may have made in the meantime is gone yet.
struct ThreadEnd
{
    const QThread *const thread;

    // Another thread than the application's may end while that goes on.
    ~ThreadEnd()
    {
        const QCoreApplication *application = QCoreApplication::instance();
        if (application && application->thread() == thread)
            endJobs();
    }
};

} // namespace

bool isClosingDown()
{
    return isEnding || QCoreApplication::closingDown();
}

QThreadPool *diskThreads()
{
    static QThreadPool *const pool = [] {
        auto *made = new QThreadPool;
        made->setMaxThreadCount(diskThreadCount);
        return made;
    }();
    return pool;
}

void waitForJobsAtExit()
{
    static thread_local const ThreadEnd end{QThread::currentThread()};
    Q_UNUSED(end)
    // QCoreApplication's destructor waits for the global pool alone. It forgets its routines.
    if (isRoutineAdded.exchange(true))
        return;
    qAddPostRoutine([] {
        endJobs();
        isRoutineAdded = false;
        isEnding = false; // from here on Qt says so itself, until there is another application
    });
}

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "backgroundpriority.h"

#include <QSemaphore>
#include <QThreadPool>

#ifdef Q_OS_LINUX
#include <memory>
#include <sys/resource.h>
#endif

namespace nk::pm::app {

#ifdef Q_OS_LINUX

namespace {

constexpr int poolNiceness = 10;

/// Where tasks wait for one another, so that no thread takes two of them.
struct Meeting
{
    QSemaphore arrived;
    QSemaphore parting;
};

} // namespace

// QThread's own priorities are either without effect under Linux's ordinary scheduling or starve a
// thread on a busy machine. What setpriority() says of a process holds there for one thread, and
// threads that a pool thread starts take after it.
void lowerPoolPriority()
{
    QThreadPool *pool = QThreadPool::globalInstance();
    pool->setExpiryTimeout(-1);
    const int count = pool->maxThreadCount();
    const auto meeting = std::make_shared<Meeting>();
    for (int i = 0; i < count; ++i) {
        pool->start([meeting] {
            setpriority(PRIO_PROCESS, 0, poolNiceness);
            meeting->arrived.release();
            meeting->parting.acquire();
        });
    }
    meeting->arrived.acquire(count);
    meeting->parting.release(count);
}

#else

void lowerPoolPriority()
{}

#endif

} // namespace nk::pm::app

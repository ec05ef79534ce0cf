// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/closingdown.h"

#include <QCoreApplication>
#include <QThreadPool>

#include <atomic>

namespace nk::pm {

namespace {

std::atomic_bool exiting{false};

struct PoolWait
{
    ~PoolWait()
    {
        exiting = true;
        // Gone together with a QCoreApplication, whose destructor waited.
        if (QThreadPool *pool = QThreadPool::globalInstance())
            pool->waitForDone();
        exiting = false;
    }
};

} // namespace

bool isClosingDown()
{
    return exiting || QCoreApplication::closingDown();
}

void waitForPoolAtExit()
{
    // exit() destroys the objects of its thread before any static one: nothing that a job may have
    // made in the meantime is gone yet.
    static thread_local const PoolWait wait;
    Q_UNUSED(wait)
}

} // namespace nk::pm

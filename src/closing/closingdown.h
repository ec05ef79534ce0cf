// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

class QThreadPool;

namespace nk::pm {

/// Whether the application is on its way out: its QCoreApplication is being destroyed, or exit()
/// was called on its thread. Jobs ask before they begin, and those that take long on their way too,
/// and give up then; nobody sees any more what they leave undone. Safe on any thread.
bool isClosingDown();

/// Threads that may wait for the disk, which those of the global pool had better not: it has as
/// many as there are processors. One pool for the process, which is never destroyed. Safe on any
/// thread.
QThreadPool *diskThreads();

/// Has the end of the application wait for the jobs of the global pool and of diskThreads() before
/// it destroys what they still use, whether its QCoreApplication ends or exit() is called on this
/// thread. For the thread that is about to have jobs started; further calls do nothing.
void waitForJobsAtExit();

} // namespace nk::pm

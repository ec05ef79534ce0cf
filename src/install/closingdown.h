// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm {

/// Whether the application is on its way out: its QCoreApplication is being destroyed, or exit()
/// was called. Pool jobs that take long ask, and end early then; nobody sees any more what they
/// leave undone. Safe on any thread.
bool isClosingDown();

/// Has exit(), called on this thread, wait for the global thread pool before it destroys what jobs
/// still use. A QCoreApplication's destructor waits by itself. For the GUI thread, before the first
/// job; further calls do nothing.
void waitForPoolAtExit();

} // namespace nk::pm

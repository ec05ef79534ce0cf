// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm::app {

/// Lets the thread of the window go before those of the global thread pool, where indexes are built
/// and searched: with as many of them as processors, the window would have to wait for its turn.
///
/// To be called once, by the main thread, before anything uses the pool; the pool's threads then
/// stay for good. Without effect where priorities of threads can't be lowered one by one.
void lowerPoolPriority();

} // namespace nk::pm::app

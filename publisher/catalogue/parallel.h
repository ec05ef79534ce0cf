// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QVector>

#include <algorithm>
#include <atomic>
#include <system_error>
#include <thread>
#include <vector>

namespace nk::pm::publisher {

/// Calls \a work for each of \a jobs, in no particular order, and returns when all are done. The
/// calling thread takes part, helped by one thread for each further core. \a work must not throw.
template<typename Job, typename Work>
void forEachOnAllCores(QVector<Job> &jobs, const Work &work)
{
    Job *const first = jobs.data();
    const int count = jobs.size();
    std::atomic_int next{0};
    const auto run = [&] {
        for (int i = next++; i < count; i = next++)
            work(first[i]);
    };
    std::vector<std::thread> helpers;
    const int cores = int(std::thread::hardware_concurrency());
    try {
        for (int i = 1; i < std::min(cores, count); ++i)
            helpers.emplace_back(run);
    } catch (const std::system_error &) {
        // The system gives no more threads; those that are there do it all.
    }
    run();
    for (std::thread &helper : helpers)
        helper.join();
}

} // namespace nk::pm::publisher

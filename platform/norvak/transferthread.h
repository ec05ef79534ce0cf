// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/curltransfer.h"

#include <QHash>

#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

namespace nk::http {

/// The process's one thread for transfers, so that no answer, whatever it is, holds up a thread of
/// the application's. Runs from the first transfer on until the application object goes, and again
/// if there is another one. All functions may be called on any thread.
class TransferThread
{
public:
    using Pointer = std::shared_ptr<Transfer>;

    /// Has \a transfer run as soon as it is its turn: a server gets six at a time.
    static void start(const Pointer &transfer);
    /// Goes on with one that is held back.
    static void resume(const Pointer &transfer);
    /// Ends one, wherever it is.
    static void cancel(const Pointer &transfer);

    TransferThread();
    /// Ends all transfers as cancelled. Waits for no server.
    ~TransferThread();

private:
    enum class Command { Start, Resume, Cancel };
    struct Lane
    {
        int running = 0;
        std::deque<Pointer> waiting;
    };

    static void command(Command command, const Pointer &transfer);
    void push(Command command, const Pointer &transfer);

    // All further is the thread's own.
    void run();
    bool obey();
    void obey(Command command, const Pointer &transfer);
    void fill(const QByteArray &origin);
    bool begin(const Pointer &transfer);
    void cancelHere(const Pointer &transfer);
    void readMessages();
    void leave(const Transfer *transfer);

    CURLM *const m_multi;
    std::mutex m_mutex;
    std::vector<std::pair<Command, Pointer>> m_commands; ///< under the mutex
    bool m_stops = false;                                ///< under the mutex
    QHash<QByteArray, Lane> m_lanes;                     ///< by origin
    std::unordered_map<const Transfer *, std::unique_ptr<CurlTransfer>> m_running;
    std::thread m_thread; // last: it uses all of the above
};

} // namespace nk::http

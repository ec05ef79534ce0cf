// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/transferthread.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <utility>

namespace nk::http {

namespace {

constexpr int transfersPerOrigin = 6;
constexpr int waitMilliseconds = 60000; // a command wakes it up
constexpr long keptConnections = 32;

/// Where the thread is, while there is one. Never destroyed: requests may be as late as the
/// destructors of the application's static objects.
struct Room
{
    std::mutex mutex;
    std::unique_ptr<TransferThread> thread;
    bool isClosed = false;
};

Room &room()
{
    static auto *const room = new Room;
    return *room;
}

void stop()
{
    const std::lock_guard lock(room().mutex);
    room().thread.reset();
}

/// The end of a process that calls exit(), with the application object still there.
struct Closer
{
    ~Closer()
    {
        qRemovePostRoutine(stop); // the library may be unloaded long before the application ends
        stop();
        const std::lock_guard lock(room().mutex);
        room().isClosed = true;
    }
};

} // namespace

// The thread has to be gone before what it stands on is: before the application's event dispatcher,
// which its events wake up, hence the post routine, and where exit() leaves the application object
// alone, before what the TLS library takes down, hence an object that is made after that library
// was set up, so that it goes before.
void TransferThread::command(Command command, const Pointer &transfer)
{
    const std::lock_guard lock(room().mutex);
    if (!room().thread && command == Command::Start && !room().isClosed) {
        static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
        static const Closer closer;
        if (ready == CURLE_OK) {
            room().thread = std::make_unique<TransferThread>();
            qAddPostRoutine(stop);
        }
    }
    if (room().thread)
        room().thread->push(command, transfer);
    else
        transfer->end(Fault::Cancelled);
}

void TransferThread::start(const Pointer &transfer)
{
    command(Command::Start, transfer);
}

void TransferThread::resume(const Pointer &transfer)
{
    command(Command::Resume, transfer);
}

void TransferThread::cancel(const Pointer &transfer)
{
    command(Command::Cancel, transfer);
}

TransferThread::TransferThread()
    : m_multi(curl_multi_init())
    , m_thread([this] { run(); })
{}

TransferThread::~TransferThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stops = true;
    }
    curl_multi_wakeup(m_multi);
    m_thread.join();
    curl_multi_cleanup(m_multi);
}

void TransferThread::push(Command command, const Pointer &transfer)
{
    {
        const std::lock_guard lock(m_mutex);
        m_commands.emplace_back(command, transfer);
    }
    curl_multi_wakeup(m_multi);
}

void TransferThread::run()
{
    // Signals are for the application's threads, and a connection that broke is none.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    curl_multi_setopt(m_multi, CURLMOPT_MAXCONNECTS, keptConnections);
    curl_multi_setopt(m_multi, CURLMOPT_PIPELINING, long(CURLPIPE_NOTHING));

    while (obey()) {
        int running = 0;
        curl_multi_perform(m_multi, &running);
        readMessages();
        curl_multi_poll(m_multi, nullptr, 0, waitMilliseconds, nullptr);
    }
    for (const auto &lane : std::as_const(m_lanes)) {
        for (const Pointer &waiting : lane.waiting)
            waiting->end(Fault::Cancelled);
    }
    for (const auto &running : m_running) {
        running.second->transfer().end(Fault::Cancelled);
        curl_multi_remove_handle(m_multi, running.second->handle());
    }
    m_running.clear();
}

bool TransferThread::obey()
{
    std::vector<std::pair<Command, Pointer>> commands;
    bool stops = false;
    {
        const std::lock_guard lock(m_mutex);
        commands.swap(m_commands);
        stops = m_stops;
    }
    for (const auto &[command, transfer] : commands)
        obey(command, transfer);
    return !stops;
}

void TransferThread::obey(Command command, const Pointer &transfer)
{
    switch (command) {
    case Command::Start:
        m_lanes[transfer->order().origin].waiting.push_back(transfer);
        fill(transfer->order().origin);
        break;
    case Command::Resume:
        if (const auto it = m_running.find(transfer.get()); it != m_running.end())
            curl_easy_pause(it->second->handle(), CURLPAUSE_CONT);
        break;
    case Command::Cancel:
        cancelHere(transfer);
        break;
    }
}

void TransferThread::fill(const QByteArray &origin)
{
    Lane &lane = m_lanes[origin];
    while (lane.running < transfersPerOrigin && !lane.waiting.empty()) {
        const Pointer next = lane.waiting.front();
        lane.waiting.pop_front();
        if (begin(next))
            ++lane.running;
        else
            next->end(Fault::Cancelled);
    }
    if (lane.running == 0 && lane.waiting.empty())
        m_lanes.remove(origin);
}

bool TransferThread::begin(const Pointer &transfer)
{
    auto fresh = std::make_unique<CurlTransfer>(transfer);
    if (!fresh->handle() || curl_multi_add_handle(m_multi, fresh->handle()) != CURLM_OK)
        return false;
    transfer->begin();
    m_running.emplace(transfer.get(), std::move(fresh));
    return true;
}

void TransferThread::cancelHere(const Pointer &transfer)
{
    if (m_running.count(transfer.get()) > 0) {
        leave(transfer.get());
        return;
    }
    const auto lane = m_lanes.find(transfer->order().origin);
    if (lane == m_lanes.end())
        return;
    auto &waiting = lane->waiting;
    waiting.erase(std::remove(waiting.begin(), waiting.end(), transfer), waiting.end());
}

void TransferThread::readMessages()
{
    int left = 0;
    while (const CURLMsg *message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        CurlTransfer *ended = nullptr;
        curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, &ended);
        ended->end(code);
        leave(&ended->transfer());
    }
}

// The transfer's place goes to the next of its lane.
void TransferThread::leave(const Transfer *transfer)
{
    const QByteArray origin = transfer->order().origin;
    const auto it = m_running.find(transfer);
    curl_multi_remove_handle(m_multi, it->second->handle());
    m_running.erase(it);
    --m_lanes[origin].running;
    fill(origin);
}

} // namespace nk::http

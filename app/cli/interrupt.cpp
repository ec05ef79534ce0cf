// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "interrupt.h"

#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace nk::pm::cli {
namespace {

constexpr std::array<int, 3> numbers{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, numbers.size()> previous;
int ends[2] = {-1, -1}; // the handler writes to the first, the notifier reads from the second

extern "C" void passOn(int number)
{
    const char byte = char(number);
    // The socket holds far more than one byte per signal; there is no one to tell of a failure.
    [[maybe_unused]] const auto written = write(ends[0], &byte, 1);
}

} // namespace

Interrupt::Interrupt(QObject *parent)
    : QObject(parent)
{
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0)
        qFatal("No socket pair for signals");
    m_notifier.reset(new QSocketNotifier(ends[1], QSocketNotifier::Read));
    connect(m_notifier.data(), &QSocketNotifier::activated, this, &Interrupt::read);
    struct sigaction action = {};
    action.sa_handler = passOn;
    action.sa_flags = int(SA_RESTART | SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (size_t i = 0; i < numbers.size(); ++i)
        sigaction(numbers[i], &action, &previous[i]);
}

Interrupt::~Interrupt()
{
    for (size_t i = 0; i < numbers.size(); ++i)
        sigaction(numbers[i], &previous[i], nullptr);
    m_notifier.reset();
    for (int &end : ends) {
        close(end);
        end = -1;
    }
}

void Interrupt::read()
{
    char byte = 0;
    if (::read(ends[1], &byte, 1) != 1)
        return;
    if (m_number == 0)
        m_number = byte;
    Q_EMIT raised();
}

} // namespace nk::pm::cli

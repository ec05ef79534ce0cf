// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "disk/worklock.h"

namespace nk::pm::disk {
namespace {

constexpr std::chrono::milliseconds longestStart{5000}; // from making the file to writing into it

} // namespace

WorkLock::WorkLock(const QString &path)
    : m_path(path)
    , m_lock(path)
{}

bool WorkLock::take(std::chrono::milliseconds patience)
{
    qint64 process = 0;
    QString host, program;
    // Age is only asked where there is no process to ask for; that of a missing file is no matter.
    const bool isSigned = m_lock.getLockInfo(&process, &host, &program);
    m_lock.setStaleLockTime(isSigned ? 0 : int(longestStart.count()));
    const bool taken = m_lock.tryLock(int(patience.count()));
    m_lock.setStaleLockTime(0);
    return taken;
}

} // namespace nk::pm::disk

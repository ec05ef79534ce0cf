// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLockFile>

#include <chrono>

namespace nk::pm::disk {

/// The lock file with which one program at a time changes what the file stands for. Let go with the
/// object. A lock is nobody's once its process is gone, however young, and never before, however
/// old; one that is still empty after some seconds is of a process that was killed as it made it.
class WorkLock
{
public:
    explicit WorkLock(const QString &path);

    /// Waits for whoever has it for \a patience at most.
    bool take(std::chrono::milliseconds patience = {});
    bool isHeld() const { return m_lock.isLocked(); }
    /// Whether take() failed because another program has it; else it is the disk's fault.
    bool isElsewhere() const { return m_lock.error() == QLockFile::LockFailedError; }
    void letGo() { m_lock.unlock(); }

    QString path() const { return m_path; }

private:
    const QString m_path;
    QLockFile m_lock;
};

} // namespace nk::pm::disk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

#include <chrono>
#include <memory>

namespace nk::pm {

/// What keeps a store's files from being removed between the moment when an install finds that they
/// are there and the one when it has linked them. Everybody who relies on the store's files shares
/// the lock; who removes some holds it alone, for some milliseconds at a time.
///
/// The lock is the system's, on an open file: it ends with the process, however that ends, and
/// counts between processes and within one. Any thread.
class StoreLock
{
public:
    enum Kind { Shared, Exclusive };

    /// Takes the lock on the file \a path, which is made if need be. Null if it can't be had for
    /// \a patience, or the system has no such locks.
    static std::unique_ptr<StoreLock> take(
        const QString &path, Kind kind, std::chrono::milliseconds patience);
    ~StoreLock();

private:
    explicit StoreLock(int descriptor);
    Q_DISABLE_COPY(StoreLock)

    const int m_descriptor;
};

} // namespace nk::pm

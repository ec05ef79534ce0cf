// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "publish/layout.h"

#include <functional>
#include <memory>

namespace nk::pm::publisher {

struct LedgerServerPrivate;

/// Serves a publication over HTTP on the loopback interface as a real web server would, conditional
/// requests and ETags included. For development: no TLS, no limits.
class LedgerServer
{
public:
    /// Is told of each answer: method, path, status. Called on the server's threads.
    using Log = std::function<void(const QString &, const QString &, int)>;

    LedgerServer(const Layout &layout, const Log &log);
    ~LedgerServer();

    /// The port that is listened on: \a port, or a free one if that is 0. 0 if it can't be had.
    int bind(int port);
    /// Answers requests until stop() is called. After bind().
    void run();
    /// Ends a run() on another thread that has begun or is about to.
    void stop();

private:
    Q_DISABLE_COPY(LedgerServer)
    std::unique_ptr<LedgerServerPrivate> d;
};

} // namespace nk::pm::publisher

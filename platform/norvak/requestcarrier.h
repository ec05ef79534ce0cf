// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/norvak_export.h>

class QNetworkRequest;

namespace nk {

class Request;

/// What a network access manager may be besides, to have a say in the requests that are sent over
/// it: Request doesn't come by the manager's createRequest(). On the manager's thread.
class NORVAK_EXPORT RequestCarrier
{
public:
    virtual ~RequestCarrier();

    /// May change \a request before it is sent, and again before it goes on where a redirect leads:
    /// what a redirect took from it, as Authorization at another origin, is missing then.
    virtual void prepare(QNetworkRequest &request);
    /// \a request begins. It is still inside its constructor: connect to its signals and to those
    /// of its reply, set its bounds.
    virtual void started(Request &request);
};

} // namespace nk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "network/sourcenetwork.h"
#include "repository/packagesource.h"

#include <norvakaccount/service.h>

#include <memory>

namespace nk::pm::app {

/// A source on the network with what it stands on. Members go in the opposite order.
struct NetworkSource
{
    std::unique_ptr<SourceNetwork> network;
    std::unique_ptr<nk::account::Service> service; ///< of a package server
    std::unique_ptr<PackageSource> source;
};

/// The package server at \a url, which may hold a user and a password. Its first poll starts in
/// the next turn of the event loop.
NetworkSource makeServerSource(const QUrl &url);

/// The CouchDB database at \a url, which may hold a user and a password. A view without an ETag is
/// named by its content. Its first poll has started.
NetworkSource makeCouchDBSource(const QUrl &url);

} // namespace nk::pm::app

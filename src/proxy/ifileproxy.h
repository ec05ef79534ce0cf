// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

class QUrl;

namespace nk::pm {

/// Somebody who knows files that aren't on the disk yet, and is asked for them by the
/// FileProxyServer.
class IFileProxy
{
public:
    virtual ~IFileProxy() = default;

    /// A client wants the file \a url, relative to the proxy's token. The answer goes to
    /// FileProxyServer::respond() with the same \a url, from within this call or at any time later;
    /// without an answer the client waits. Called on the server's thread.
    virtual void requestFile(const QUrl &url) = 0;
};

} // namespace nk::pm

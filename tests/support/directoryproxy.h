// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "proxy/fileproxyserver.h"
#include "proxy/ifileproxy.h"

#include <QVector>

namespace nk::pm::test {

/// The files of a directory through the file proxy, each answered at once or, after hold(),
/// when release() is called. A file that isn't there gets 404.
class DirectoryProxy : public IFileProxy
{
public:
    explicit DirectoryProxy(const QString &directory);
    ~DirectoryProxy() override;

    void requestFile(const QUrl &url) override;

    /// The URL of the file \a name below the directory.
    QUrl url(const QString &name) const;
    FileProxyServer *server() const { return m_server.data(); }

    void hold() { m_holding = true; }
    /// The requests that wait.
    int heldCount() const { return m_held.size(); }
    void release();
    /// Answers the request that has waited longest, if there is one, and goes on holding.
    void releaseOne();

    int requestCount() const { return m_requestCount; }

private:
    Q_DISABLE_COPY(DirectoryProxy)
    void answer(const QUrl &url);

    const QString m_directory;
    const QSharedPointer<FileProxyServer> m_server;
    const QString m_token;
    QVector<QUrl> m_held;
    bool m_holding = false;
    int m_requestCount = 0;
};

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/directoryproxy.h"

#include <QFile>

#include <utility>

namespace nk::pm::test {

DirectoryProxy::DirectoryProxy(const QString &directory)
    : m_directory(directory)
    , m_server(FileProxyServer::instance())
    , m_token(m_server->addProxy(this))
{}

DirectoryProxy::~DirectoryProxy()
{
    m_server->removeProxy(m_token);
}

void DirectoryProxy::requestFile(const QUrl &url)
{
    ++m_requestCount;
    if (m_holding)
        m_held.append(url);
    else
        answer(url);
}

QUrl DirectoryProxy::url(const QString &name) const
{
    return m_server->proxyUrl(m_token, QUrl(name));
}

void DirectoryProxy::release()
{
    m_holding = false;
    for (const QUrl &url : std::exchange(m_held, {}))
        answer(url);
}

void DirectoryProxy::releaseOne()
{
    if (!m_held.isEmpty())
        answer(m_held.takeFirst());
}

void DirectoryProxy::answer(const QUrl &url)
{
    const QString path = m_directory + QLatin1Char('/') + url.path();
    const bool exists = QFile::exists(path);
    m_server->respond(m_token, url, exists ? 200 : 404, exists ? path : QString());
}

} // namespace nk::pm::test

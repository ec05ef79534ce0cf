// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QProcess>
#include <QSslConfiguration>
#include <QTemporaryDir>
#include <QUrl>

namespace nk::pm::test {

/// A real nginx on free loopback ports, with one worker, for the scope's life; it ends with the
/// process that started it, however that ends. It serves the files below root():
///
///   /...           plain, with persistent connections and range requests
///   /gzip/...      packed for every client that says it takes gzip
///   /quiet/...     plain, without a line in the log: requestCount() stays as it is
///   /slow/...      64 KiB a second after the first 64 KiB
///   /closing/...   one connection for each request
///   /busy/...      503
///   /moved/...     302 to the same path without /moved; /tls-moved/... to TLS, /plain-moved/...
///   from it
///
/// and all of it over TLS too, with a certificate for localhost of an authority of its own.
class NginxServer
{
public:
    NginxServer();
    ~NginxServer();

    /// False where there is no nginx or openssl program; a test then skips itself.
    static bool isInstalled();

    QString root() const { return m_directory.filePath(QStringLiteral("root")); }
    /// Writes \a content to \a name below root().
    void addFile(const QString &name, const QByteArray &content) const;

    QUrl url(const QString &path) const;
    QUrl tlsUrl(const QString &path) const;
    /// Trusts the server's authority, and no other.
    QSslConfiguration trust() const;

    qint64 processId() const { return m_process.processId(); }

    /// How many requests have finished, successful or not.
    int requestCount() const;
    /// Over how many connections the last \a count requests came.
    int connectionsOfLast(int count) const;
    /// Kills the server at once, as a crash would.
    void kill() { m_process.kill(); }
    /// Starts it again on the same ports.
    void restart();

private:
    /// Ends the child when this process dies without a chance to do so itself.
    class Process : public QProcess
    {
        void setupChildProcess() override;
    };

    QList<QByteArray> accessLog() const;
    void makeCertificates() const;
    void writeConfiguration() const;
    bool start();

    QTemporaryDir m_directory;
    Process m_process;
    quint16 m_port = 0;
    quint16 m_tlsPort = 0;
};

} // namespace nk::pm::test

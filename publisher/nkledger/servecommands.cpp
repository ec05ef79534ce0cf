// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commands.h"
#include "ledgerserver.h"
#include "publish/nginxconfig.h"

#include <QDir>
#include <QJsonDocument>

#include <csignal>
#include <thread>

namespace nk::pm::publisher {

namespace {

/// The signals that end the server; blocked in all threads, so that only wait() gets them.
class EndSignals
{
public:
    EndSignals()
    {
        sigemptyset(&m_signals);
        sigaddset(&m_signals, SIGINT);
        sigaddset(&m_signals, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &m_signals, nullptr);
    }

    void wait() const
    {
        int number = 0;
        sigwait(&m_signals, &number);
    }

private:
    sigset_t m_signals;
};

void printAddress(int port, Output &output)
{
    const QString url = QStringLiteral("http://127.0.0.1:%1/").arg(port);
    if (output.isJson())
        output.json({{QStringLiteral("url"), url}});
    else
        output.lines({url});
    output.flush();
}

} // namespace

ExitCode run(const ServeOptions &options, Output &output)
{
    if (!isPublication(options.publication, output))
        return Failed;
    QMutex mutex;
    const auto log = [&](const QString &method, const QString &path, int status) {
        const QMutexLocker locker(&mutex);
        if (output.isJson())
            return;
        output.lines(
            {terminal::printable(QStringLiteral("%1 %2 %3").arg(method, path).arg(status))});
        output.flush();
    };
    const EndSignals endSignals;
    LedgerServer server(Layout(options.publication), log);
    const int port = server.bind(options.port);
    if (port == 0) {
        output.error(QStringLiteral("can't listen on port %1 of 127.0.0.1").arg(options.port));
        return Failed;
    }
    printAddress(port, output);
    std::thread thread([&server] { server.run(); });
    endSignals.wait();
    server.stop();
    thread.join();
    return Fine;
}

ExitCode run(const NginxOptions &options, Output &output)
{
    if (!isPublication(options.publication, output))
        return Failed;
    QString fault;
    const QString config = nginxConfig(
        {QDir::cleanPath(QFileInfo(options.publication).absoluteFilePath()), options.listen,
         options.serverName, options.prefix},
        &fault);
    if (!fault.isEmpty()) {
        output.error(fault);
        return Failed;
    }
    if (output.isJson())
        output.json({{QStringLiteral("config"), config}});
    else
        output.lines(config.trimmed().split(u'\n'));
    return Fine;
}

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "nkledgerprocess.h"

#include <QJsonDocument>

#include <csignal>

namespace nk::pm::test {

namespace {

constexpr int patience = 120000; // milliseconds

} // namespace

QJsonObject CallResult::json() const
{
    return QJsonDocument::fromJson(output).object();
}

CallResult callNkledger(const QString &directory, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(directory);
    process.start(NKLEDGER, arguments);
    process.closeWriteChannel();
    const bool ended = process.waitForFinished(patience);
    const bool exited = ended && process.exitStatus() == QProcess::NormalExit;
    return {
        exited ? process.exitCode() : -1, process.readAllStandardOutput(),
        QString::fromUtf8(process.readAllStandardError())};
}

ServedPublication::ServedPublication(const QString &publication)
{
    m_process.start(NKLEDGER, {"serve", publication});
    while (!m_process.canReadLine() && m_process.waitForReadyRead(patience)) {
    }
    m_url = QString::fromUtf8(m_process.readLine()).trimmed();
}

ServedPublication::~ServedPublication()
{
    if (m_process.state() != QProcess::NotRunning)
        interrupt();
}

int ServedPublication::interrupt()
{
    ::kill(pid_t(m_process.processId()), SIGINT);
    const bool ended = m_process.waitForFinished(patience);
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void makeKeys(const QString &directory)
{
    const QVector<QStringList> calls{
        {"keygen", "trust"},
        {"keygen", "studio"},
        {"issue", "studio.pem", "--trust", "trust-private.pem", "--label", "Studio"},
    };
    for (const QStringList &call : calls) {
        const CallResult result = callNkledger(directory, call);
        if (result.exitCode != 0)
            qFatal("nkledger %s: %s", qPrintable(call.join(' ')), qPrintable(result.errors));
    }
}

QStringList keyArguments()
{
    return {"--issuer", "studio-private.pem", "--trust", "trust.pem"};
}

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "nkledgerprocess.h"

#include <QFile>

#include <csignal>

namespace nk::pm::test {

namespace {

constexpr int patience = 120000; // milliseconds

void succeed(const QString &directory, const QStringList &arguments)
{
    const CallResult result = callNkledger(directory, arguments);
    if (result.exitCode != 0)
        qFatal("nkledger %s: %s", qPrintable(arguments.join(' ')), qPrintable(result.errors));
}

} // namespace

CallResult callNkledger(const QString &directory, const QStringList &arguments)
{
    return call(NKLEDGER, arguments, directory);
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
    return finish(m_process).exitCode;
}

void makeKeys(const QString &directory, Trust trust)
{
    if (trust == Trust::Nobody) {
        succeed(directory, {"keygen", "trust"});
    } else {
        for (const QString name : {"trust.pem", "trust-private.pem"})
            QFile::copy(NKPM_SOURCE_DIR "/keys/development-" + name, directory + '/' + name);
    }
    succeed(directory, {"keygen", "studio"});
    succeed(
        directory, {"issue", "studio.pem", "--trust", "trust-private.pem", "--label", "Studio"});
}

QStringList publishArguments(const QString &catalogue, const QString &target)
{
    return {"publish", catalogue, target, "--issuer", "studio-private.pem", "--trust", "trust.pem"};
}

void publishWithKeys(const QString &directory, const QString &catalogue, const QString &target)
{
    succeed(directory, publishArguments(catalogue, target));
}

} // namespace nk::pm::test

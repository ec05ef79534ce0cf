// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "commandline.h"
#include "commands.h"

#include <QCoreApplication>
#include <QTextCodec>

#include <csignal>

using namespace nk::pm::publisher;

int main(int argc, char *argv[])
{
    // A file that grows beyond a limit is a write that fails, with its message and tidying up.
    std::signal(SIGXFSZ, SIG_IGN);
    const auto parsed = parseCommandLine(argc, argv);
    if (const ExitCode *code = std::get_if<ExitCode>(&parsed))
        return *code;
    const auto &invocation = std::get<Invocation>(parsed);
    QCoreApplication application(argc, argv);
    // Names of files are UTF-8 in the ledger, whatever the locale of who publishes: cron's has
    // none.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    nk::pm::terminal::Output output(QStringLiteral("nkledger"), invocation.json);
    const ExitCode code =
        std::visit([&](const auto &options) { return run(options, output); }, invocation.command);
    return output.flush() ? code : Failed;
}

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue.h"
#include "commandline.h"
#include "commands.h"
#include "exitcodes.h"
#include "log.h"
#include "output.h"

#include "install/openfilelimit.h"
#include "install/storepolicy.h"
#include "network/directoryfault.h"
#include "proxy/proxyhostcheck.h"

#include <norvak/locations.h>

#include <QCoreApplication>
#include <QDir>

#include <csignal>

using namespace nk::pm::cli;

namespace {

int carryOut(const Invocation &invocation)
{
    Output output(QStringLiteral("nkpm"), invocation.json);
    Catalogue catalogue(invocation.sources);
    const QString fault = invocation.needsSources() ? catalogue.open() : QString();
    if (!fault.isEmpty()) {
        output.error(fault);
        return NotMet;
    }
    const auto warnings = catalogue.warnings();
    for (const QString &warning : warnings)
        output.error(warning);
    const int code = std::visit(
        [&](const auto &options) { return run(options, catalogue, output); }, invocation.command);
    return output.flush() ? code : int(NotMet);
}

} // namespace

int main(int argc, char *argv[])
{
    // A file that grows beyond a limit is a write that fails, with its message and tidying up.
    std::signal(SIGXFSZ, SIG_IGN);
    nk::pm::raiseOpenFileLimit(); // nothing here calls select()
    const auto parsed = parseCommandLine(argc, argv);
    if (const int *code = std::get_if<int>(&parsed))
        return *code;
    const auto &invocation = std::get<Invocation>(parsed);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("nkpm"));
    setUpLog(invocation.verbose);
    nk::pm::setProxyHostCheck(true);
    nk::pm::setStorePolicy(nk::pm::StorePolicy::Strict);
    if (!invocation.dataDirectory.isEmpty())
        nk::Locations::setDataLocation(invocation.dataDirectory);
    const QString fault = nk::pm::app::dataDirectoryFault(nk::Locations::dataLocation().path());
    if (!fault.isEmpty()) {
        Output(QStringLiteral("nkpm"), invocation.json).error(fault);
        return NotMet;
    }
    return carryOut(invocation);
}

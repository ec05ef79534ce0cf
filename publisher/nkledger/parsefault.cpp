// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "parsefault.h"

#include <CLI/App.hpp>

#include <iostream>

namespace nk::pm::publisher {

namespace {

/// What the user typed in place of a command; the parser only says that one is required.
std::string unknownCommand(const CLI::App &app, int argc, const char *const *argv)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.compare(0, 1, "-") != 0)
            return app.get_subcommands().empty() ? argument : std::string();
    }
    return {};
}

} // namespace

ExitCode explainFault(
    const CLI::App &app, const CLI::ParseError &error, int argc, const char *const *argv)
{
    const std::string unknownName = unknownCommand(app, argc, argv);
    if (error.get_exit_code() == int(CLI::ExitCodes::Success)) {
        app.exit(error, std::cout, std::cerr);
        return Fine;
    }
    if (!unknownName.empty()) {
        std::cerr << "nkledger: there is no command \"" << unknownName << "\" (nkledger --help)\n";
        return Usage;
    }
    if (app.get_subcommands().empty()) {
        const auto left = app.remaining();
        std::cerr << "nkledger: "
                  << (left.empty() ? "a command is missing"
                                   : "there is no option \"" + left.front() + '"')
                  << " (nkledger --help)\n";
        return Usage;
    }
    std::string command = "nkledger";
    for (const CLI::App *chosen : app.get_subcommands())
        command += " " + chosen->get_name();
    std::cerr << "nkledger: " << error.what() << " (" << command << " --help)\n";
    return Usage;
}

} // namespace nk::pm::publisher

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "commandline.h"

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace nk::pm::publisher {

/// Prints the help or version that was asked for, or what is wrong with the arguments in one line,
/// and gives the exit code.
ExitCode explainFault(
    const CLI::App &app, const CLI::ParseError &error, int argc, const char *const *argv);

} // namespace nk::pm::publisher

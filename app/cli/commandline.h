// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "options.h"

#include <variant>

namespace nk::pm::cli {

/// Reads the command line. Gives the exit code where there is nothing left to do: after --help and
/// --version, whose text it prints, and after wrong usage, which it explains on stderr.
std::variant<Invocation, int> parseCommandLine(int argc, const char *const *argv);

} // namespace nk::pm::cli

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "options.h"

#include <variant>

namespace nk::pm::publisher {

/// What nkledger leaves to its caller.
enum ExitCode {
    Fine = 0,
    Failed = 1, ///< the call was understood but could not be carried out
    Usage = 2,
};

/// The call that the arguments make, or the exit code if there is nothing to do: help was asked for
/// and printed, or the arguments are wrong and stderr says why.
std::variant<Invocation, ExitCode> parseCommandLine(int argc, const char *const *argv);

} // namespace nk::pm::publisher

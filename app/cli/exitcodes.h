// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm::cli {

/// What nkpm leaves to its caller. A signal that ended an install gives 128 plus its number.
enum ExitCode {
    Fine = 0,
    NotMet = 1, ///< the request was understood but could not be met
    Usage = 2,
    SignalBase = 128,
};

} // namespace nk::pm::cli

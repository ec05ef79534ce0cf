// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm::cli {

/// Sends the library's log to stderr: all of it if \a verbose, otherwise only what is critical and
/// isn't reported by a command anyway. Never to a system journal, wherever nkpm runs.
void setUpLog(bool verbose);

} // namespace nk::pm::cli

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "terminal/output.h"

namespace nk::pm::cli {

using Output = terminal::Output;
using Progress = terminal::ProgressLine;
using Table = terminal::Table;
using terminal::printable;

} // namespace nk::pm::cli

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "catalogue/progress.h"

namespace nk::pm::publisher {

void Progress::begin(const QString &, int)
{}

void Progress::advance()
{}

void Progress::end()
{}

} // namespace nk::pm::publisher

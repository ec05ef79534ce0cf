// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "references/logging.h"

namespace nk::pm {

Q_LOGGING_CATEGORY(lcPackages, "norvak.packages", QtInfoMsg)

} // namespace nk::pm

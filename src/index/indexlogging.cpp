// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "index/indexlogging.h"

namespace nk::pm {

Q_LOGGING_CATEGORY(lcPackageIndex, "norvak.package.index", QtInfoMsg)

} // namespace nk::pm

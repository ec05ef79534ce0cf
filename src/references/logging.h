// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLoggingCategory>

namespace nk::pm {

Q_DECLARE_LOGGING_CATEGORY(lcPackages)

} // namespace nk::pm

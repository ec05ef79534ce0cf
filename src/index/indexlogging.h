// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLoggingCategory>

namespace nk::pm {

/// "norvak.package.index": the index build and the walks over the graph. From info up by default.
Q_DECLARE_LOGGING_CATEGORY(lcPackageIndex)

} // namespace nk::pm

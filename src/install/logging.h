// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLoggingCategory>

namespace nk::pm {

Q_DECLARE_LOGGING_CATEGORY(lcInstall)
Q_DECLARE_LOGGING_CATEGORY(lcFileStore)
// Nothing is written to these two; applications name them in their filter rules.
Q_DECLARE_LOGGING_CATEGORY(lcPackageServerInstaller)
Q_DECLARE_LOGGING_CATEGORY(lcCouchDBInstaller)

} // namespace nk::pm

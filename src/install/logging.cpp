// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "install/logging.h"

namespace nk::pm {

Q_LOGGING_CATEGORY(lcInstall, "norvak.package.install", QtInfoMsg)
Q_LOGGING_CATEGORY(lcFileStore, "norvak.package.filestore", QtInfoMsg)
Q_LOGGING_CATEGORY(lcPackageServerInstaller, "norvak.packageserver.installer", QtInfoMsg)
Q_LOGGING_CATEGORY(lcCouchDBInstaller, "norvak.package.couchdb.installer", QtInfoMsg)

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvakpackagemanager_export.h>

#include <QByteArray>

namespace nk::pm::ledger {

/// The PEM block of the public key that signs the issuers of the ledgers this build accepts: the
/// file that NKPM_TRUST_KEY named when the build was configured.
NK_PM_EXPORT QByteArray trustKeyPem();

/// Whether that is the key of keys/development-trust.pem, with which anybody can sign. The programs
/// say so.
NK_PM_EXPORT bool trustsDevelopmentKey();

} // namespace nk::pm::ledger

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/norvak_export.h>

class QUrl;

namespace nk {

/// Whether \a a and \a b have the same scheme, host and port, a missing port being the scheme's
/// own. What is secret for one origin is never sent to another. False for URLs without a host. Any
/// thread.
NORVAK_EXPORT bool sameOrigin(const QUrl &a, const QUrl &b);

} // namespace nk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::pm::publisher {

/// JavaScript text of the map function of the view that CouchDBPackageSource reads.
QString packagesMapFunction();

} // namespace nk::pm::publisher

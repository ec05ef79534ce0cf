// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

namespace nk::pm {

/// Makes the classes for user interfaces known to QML as "Norvak.Packages 1.0": models, matchers,
/// sorters, manifest fields, Keyword and PackageData. A PackageReference comes from the
/// application's provider and can't be created. Call it once, before an engine imports the module,
/// which then takes no plugin, wherever one lies; applications that import the installed plugin
/// needn't, and don't.
void registerQmlTypes();

/// The same under the name \a uri, for the plugin.
void registerQmlTypes(const char *uri);

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvakpackagesqml.h"

#include <QtGlobal>

// A static library's resources aren't there by themselves. Outside of any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(applicationmodule);
}

namespace nk::pm {

// In a file apart from what the plugin needs, which must not bring the resource.
void registerQmlTypes()
{
    registerQmlTypes("Norvak.Packages");
    initResources();
}

} // namespace nk::pm

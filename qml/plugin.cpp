// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "plugin.h"

#include "norvakpackagesqml.h"

void NorvakPackagesPlugin::registerTypes(const char *uri)
{
    nk::pm::registerQmlTypes(uri);
}

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>

namespace nk {

class Locations
{
public:
    static QDir dataLocation();
    static void setDataLocation(const QString &path);
};

} // namespace nk

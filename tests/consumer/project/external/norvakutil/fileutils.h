// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>

namespace nk::util {

class FileUtils
{
public:
    static bool syncFile(const QString &) { return true; }
};

} // namespace nk::util

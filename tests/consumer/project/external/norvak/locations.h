// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>

namespace nk {

class Locations
{
public:
    static QDir dataLocation() { return QDir(s_path); }
    static void setDataLocation(const QString &path) { s_path = path; }

private:
    static inline QString s_path;
};

} // namespace nk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QDir>

namespace nk {

/// Exported, so that a shared library and the program have the same path.
class Q_DECL_EXPORT Locations
{
public:
    static QDir dataLocation() { return QDir(s_path); }
    static void setDataLocation(const QString &path) { s_path = path; }

private:
    static inline QString s_path;
};

} // namespace nk

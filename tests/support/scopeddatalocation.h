// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QTemporaryDir>

namespace nk::pm::test {

/// An empty data directory for one test: Locations::dataLocation() points at it for the scope's
/// life, then at that of the scope around it.
class ScopedDataLocation
{
public:
    ScopedDataLocation();
    ~ScopedDataLocation();

    QString path() const { return m_directory.path(); }
    QString filePath(const QString &name) const { return m_directory.filePath(name); }

private:
    Q_DISABLE_COPY(ScopedDataLocation)
    static QString s_current;
    const QString m_outer = s_current;
    QTemporaryDir m_directory;
};

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <norvak/locations.h>

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QTemporaryDir>

namespace nk::pm::fuzz {

/// A data directory for the process, and no log: what hostile input makes a reader say would be
/// most of a run's time.
class Environment
{
public:
    Environment()
    {
        nk::Locations::setDataLocation(m_data.path());
        QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
    }

private:
    Q_DISABLE_COPY(Environment)

    // In memory where that can be had: some targets write files for each input.
    static QString pathTemplate()
    {
        const QString memory = QStringLiteral("/dev/shm");
        const bool isThere = QFileInfo(memory).isWritable();
        return (isThere ? memory : QDir::tempPath()) + QLatin1String("/norvak-fuzz-XXXXXX");
    }

    QTemporaryDir m_data{pathTemplate()};
};

} // namespace nk::pm::fuzz

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "sourcespec.h"

#include <QSize>
#include <QString>
#include <QStringList>
#include <QVector>

namespace nk::pm::app {

/// What the command line asks for.
struct Options
{
    QVector<SourceSpec> sources; ///< in the order of the command line, by kind
    QString dataDirectory;       ///< empty: the default of the platform
    QString collection;          ///< file of a collection to open; empty: none
    QString screenshot;          ///< file to write a picture to; empty: an ordinary start
    QString view = QStringLiteral("grid");
    QString theme; ///< "light" or "dark"; empty: what is remembered, else the system's
    QSize size;    ///< of the window; invalid: what is remembered
    bool measure = false;
    bool passing = false; ///< takes nothing from the settings and leaves no trace there
};

/// Reads the command line \a arguments, the program's name first. Ends the process, with a text
/// for the user, when they are wrong (2) or ask for help (0).
Options parseOptions(const QStringList &arguments);

} // namespace nk::pm::app

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace nk::pm::test {

/// What a run of a program gave.
struct CallResult
{
    int exitCode = -1; ///< -1 if it crashed or was killed, or didn't end
    QByteArray output;
    QString errors;

    QJsonObject json() const;
    /// The first word of each line of output.
    QStringList firstWords() const;
};

/// The environment of this process with \a changes; a null value takes a variable away.
QProcessEnvironment environmentWith(const QMap<QString, QString> &changes);

/// Waits for the end of \a process, which runs, for \a patience milliseconds at most.
CallResult finish(QProcess &process, int patience = 240000);

/// Calls \a program in \a directory, or in this process's own, and waits for its end.
CallResult call(
    const QString &program, const QStringList &arguments, const QString &directory = {},
    const QMap<QString, QString> &environmentChanges = {});

} // namespace nk::pm::test

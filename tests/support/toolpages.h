// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

namespace nk::pm::test {

/// What the help of a command-line tool says, to hold its man page and completions to it.
class ToolPages
{
public:
    /// Runs \a program for its help and, if \a hasCommands, for that of each command.
    ToolPages(const QString &program, bool hasCommands);

    QStringList commands() const { return m_commands; }
    /// The long options of all commands.
    QStringList options() const { return m_options; }
    /// Commands whose help doesn't end well or has no example.
    QStringList badHelp() const { return m_badHelp; }

    /// Commands and options that the file \a name of packaging/ doesn't have, and options that only
    /// it has.
    QStringList missingIn(const QString &name) const;
    QStringList unknownIn(const QString &name) const;

private:
    QString help(const QStringList &arguments);

    const QString m_program;
    QStringList m_commands;
    QStringList m_options;
    QStringList m_badHelp;
};

/// What bash offers for the last of \a words behind the tool \a tool, in \a directory.
QString bashCompletions(const QString &tool, const QStringList &words, const QString &directory);

} // namespace nk::pm::test

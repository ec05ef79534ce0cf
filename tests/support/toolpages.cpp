// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/toolpages.h"

#include "support/testfiles.h"

#include <QProcess>
#include <QRegularExpression>

namespace nk::pm::test {

namespace {

QStringList longOptions(const QString &text)
{
    static const QRegularExpression option("(?<![\\w-])--[a-z][a-z-]*[a-z]");
    QStringList found;
    for (auto it = option.globalMatch(text); it.hasNext();)
        found.append(it.next().captured());
    found.removeDuplicates();
    return found;
}

QString packagingPath(const QString &name)
{
    return NKPM_SOURCE_DIR "/packaging/" + name;
}

/// The text of a page, hyphens as they are printed.
QString page(const QString &name)
{
    return QString(readFile(packagingPath(name))).replace("\\-", "-");
}

} // namespace

ToolPages::ToolPages(const QString &program, bool hasCommands)
    : m_program(program)
{
    const QString ownHelp = help({});
    m_options = longOptions(ownHelp);
    static const QRegularExpression command(
        "^  ([a-z][a-z-]+)  +[A-Z]", QRegularExpression::MultilineOption);
    for (auto it = command.globalMatch(ownHelp); hasCommands && it.hasNext();)
        m_commands.append(it.next().captured(1));
    for (const QString &name : qAsConst(m_commands)) {
        const QString text = help({name});
        if (!text.contains("Example"))
            m_badHelp.append(name);
        m_options += longOptions(text);
    }
    m_options.removeDuplicates();
}

/// Empty if the program fails.
QString ToolPages::help(const QStringList &arguments)
{
    QProcess process;
    process.start(m_program, arguments + QStringList{"--help"});
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit
        || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput();
}

QStringList ToolPages::missingIn(const QString &name) const
{
    const QString text = page(name);
    const QStringList known = longOptions(text);
    QStringList missing;
    for (const QString &command : m_commands) {
        if (!text.contains(QRegularExpression("\\b" + command + "\\b")))
            missing.append(command);
    }
    for (const QString &option : m_options) {
        if (!known.contains(option))
            missing.append(option);
    }
    return missing;
}

QStringList ToolPages::unknownIn(const QString &name) const
{
    QStringList unknown;
    for (const QString &option : longOptions(page(name))) {
        if (!m_options.contains(option))
            unknown.append(option);
    }
    return unknown;
}

QString bashCompletions(const QString &tool, const QStringList &words, const QString &directory)
{
    QProcess bash;
    bash.setProcessChannelMode(QProcess::MergedChannels);
    bash.setWorkingDirectory(directory);
    const QString script = "source \"$0\"; COMP_WORDS=(%1 \"$@\"); COMP_CWORD=$#; _%1; "
                           "echo \"${COMPREPLY[*]}\"";
    const QString file = packagingPath("completions/" + tool + ".bash");
    bash.start("bash", QStringList{"-c", script.arg(tool), file} + words);
    if (!bash.waitForFinished(60000))
        return "bash doesn't end";
    return QString(bash.readAll()).trimmed();
}

} // namespace nk::pm::test

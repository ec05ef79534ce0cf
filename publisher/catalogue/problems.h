// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QString>
#include <QVector>

namespace nk::pm::publisher {

/// One thing that is wrong with a catalogue.
struct Problem
{
    enum Severity { Warning, Error };

    Severity severity = Error;
    QString file; ///< relative to the catalogue's root; empty if no single file is at fault
    QString text;
};

/// Everything found wrong in one run. An error stands against publishing, a warning doesn't.
class Problems
{
public:
    void error(const QString &file, const QString &text);
    void warning(const QString &file, const QString &text);
    void append(const Problems &others);

    bool isEmpty() const { return m_list.isEmpty(); }
    bool hasErrors() const { return errorCount() > 0; }
    int errorCount() const;
    int warningCount() const { return m_list.size() - errorCount(); }

    /// By file, then by text; what one file has against it keeps errors before warnings.
    QVector<Problem> sorted() const;

private:
    QVector<Problem> m_list;
};

} // namespace nk::pm::publisher

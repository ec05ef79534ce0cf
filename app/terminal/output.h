// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonDocument>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace nk::pm::terminal {

/// Rows of texts under headings, to be aligned in columns.
struct Table
{
    QStringList headings;
    QVector<QStringList> rows;
    /// Numbers of the columns that stand to the right: numbers.
    QVector<int> rightAligned = {};
};

/// \a text with every character that could steer a terminal, break a line or hide made visible.
/// Names come from places that nobody vouches for.
QString printable(const QString &text);

/// \a document, indented, with such characters escaped.
QString jsonText(const QJsonDocument &document);

/// The lines of \a table without its headings.
QStringList alignedRows(const Table &table);

/// What of a line stands out where colours are wanted.
enum class Emphasis { Error, Warning };

/// Writes a program's results to stdout and its errors to stderr, for people or as JSON.
class Output
{
public:
    /// \a program stands before each error.
    Output(const QString &program, bool json);

    bool isJson() const { return m_json; }

    void table(const Table &table);
    void lines(const QStringList &lines);
    void json(const QJsonObject &object);

    /// The program's name and \a message, on one line of stderr.
    void error(const QString &message);
    /// \a subject, \a label ("error", "warning") and \a message, on one line of stderr.
    void remark(
        Emphasis emphasis, const QString &subject, const QString &label, const QString &message);

    /// On a terminal: \a message for the user that is no result.
    void note(const QString &message);

    /// Whether everything so far was written. A reader that has gone away counts as satisfied.
    bool flush();

private:
    void write(const QString &text);

    const QString m_program;
    const bool m_json;
    const bool m_styled;       // stdout is a terminal that takes escape sequences
    const bool m_styledErrors; // so is stderr
    int m_errno = 0;
};

/// One line on a terminal's stderr that tells how far a long work has come. Says nothing elsewhere.
class ProgressLine
{
public:
    ProgressLine();
    ~ProgressLine();

    bool isEnabled() const { return m_enabled; }
    void show(const QString &text);
    /// Takes the line away.
    void clear();

private:
    Q_DISABLE_COPY(ProgressLine)

    const bool m_enabled;
    bool m_shown = false;
};

} // namespace nk::pm::terminal

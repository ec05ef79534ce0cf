// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

namespace nk::pm::cli {

/// Rows of texts under headings, to be aligned in columns.
struct Table
{
    QStringList headings;
    QVector<QStringList> rows;
    /// Numbers of the columns that stand to the right: numbers.
    QVector<int> rightAligned = {};
};

/// \a text with every character that could steer a terminal made visible. Names come from sources
/// that nobody vouches for.
QString printable(const QString &text);

/// The lines of \a table without its headings, each without trailing blanks.
QStringList alignedRows(const Table &table);

/// Writes results to stdout and errors to stderr, for people or as JSON.
class Output
{
public:
    explicit Output(bool json);

    bool isJson() const { return m_json; }

    void table(const Table &table);
    void lines(const QStringList &lines);
    void json(const QJsonObject &object);

    /// "nkpm: " and \a message, on one line of stderr.
    void error(const QString &message);

    /// On a terminal: \a message for the user that is no result.
    void note(const QString &message);

    /// Whether everything so far was written. A reader that has gone away counts as satisfied.
    bool flush();

private:
    void write(const QString &text);

    const bool m_json;
    const bool m_styled; // stdout is a terminal that takes escape sequences
    int m_errno = 0;
};

/// One line on a terminal's stderr that tells how far a long work has come. Says nothing elsewhere.
class Progress
{
public:
    Progress();
    ~Progress();
    Q_DISABLE_COPY(Progress)

    void show(const QString &text);
    /// Takes the line away.
    void clear();

private:
    const bool m_enabled;
    bool m_shown = false;
};

} // namespace nk::pm::cli

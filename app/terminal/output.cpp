// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "terminal/output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <unistd.h>

namespace nk::pm::terminal {
namespace {

bool takesEscapes(int descriptor)
{
    return isatty(descriptor) == 1 && qgetenv("TERM") != "dumb";
}

/// https://no-color.org: present and not empty means no.
bool takesStyle(int descriptor)
{
    return takesEscapes(descriptor) && qEnvironmentVariableIsEmpty("NO_COLOR");
}

constexpr uint firstBeyondAscii = 0x7f; // the control character at its end included

/// Whether a terminal, or a reader of text, does something else with the code point than show it.
bool isInvisible(uint c)
{
    switch (QChar::category(c)) {
    case QChar::Other_Control:
    case QChar::Other_Format: // marks of direction, zero-width ones, tags
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        break;
    }
    static constexpr uint shapeless[] = {0x034f, 0x115f, 0x1160, 0x17b4, 0x17b5, 0x3164, 0xffa0};
    return (c >= 0xe0000 && c <= 0xe0fff)
           || std::find(std::begin(shapeless), std::end(shapeless), c) != std::end(shapeless);
}

/// \a text with its invisible characters from \a first on as JSON writes them.
QString escaped(const QString &text, uint first)
{
    QString result;
    result.reserve(text.size());
    const auto points = text.toUcs4();
    for (const uint point : points) {
        const QString character = QString::fromUcs4(&point, 1);
        if (point < first || !isInvisible(point)) {
            result += character;
            continue;
        }
        for (const QChar unit : character)
            result += QStringLiteral("\\u%1").arg(int(unit.unicode()), 4, 16, QLatin1Char('0'));
    }
    return result;
}

QString padded(const QString &text, int width, bool right)
{
    return right ? text.rightJustified(width) : text.leftJustified(width);
}

void writeError(const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

} // namespace

QString printable(const QString &text)
{
    return escaped(text, 0);
}

QString jsonText(const QJsonDocument &document)
{
    // What is beyond ASCII stands in texts only, where an escape is as good.
    return escaped(QString::fromUtf8(document.toJson()), firstBeyondAscii);
}

QStringList alignedRows(const Table &table)
{
    QVector<QStringList> rows;
    QVector<int> widths(table.headings.size());
    for (const auto &row : table.rows) {
        rows.append(QStringList());
        for (int i = 0; i < row.size(); ++i) {
            rows.last().append(printable(row.at(i)));
            widths[i] = std::max(widths[i], rows.last().last().size());
        }
    }
    QStringList lines;
    for (const auto &row : qAsConst(rows)) {
        QString line;
        for (int i = 0; i < row.size(); ++i) {
            const bool last = i + 1 == row.size();
            const bool right = table.rightAligned.contains(i);
            line += last && !right ? row.at(i) : padded(row.at(i), widths.at(i), right);
            if (!last)
                line += QLatin1String("  ");
        }
        lines.append(line);
    }
    return lines;
}

Output::Output(const QString &program, bool json)
    : m_program(program)
    , m_json(json)
    , m_styled(takesStyle(STDOUT_FILENO))
    , m_styledErrors(takesStyle(STDERR_FILENO))
{}

void Output::table(const Table &table)
{
    if (isatty(STDOUT_FILENO) != 1) {
        lines(alignedRows(table));
        return;
    }
    Table headed = table;
    headed.rows.prepend(table.headings);
    QStringList all = alignedRows(headed);
    if (m_styled)
        all.first() = QLatin1String("\x1b[1m") + all.first() + QLatin1String("\x1b[0m");
    lines(all);
}

void Output::lines(const QStringList &lines)
{
    for (const auto &line : lines)
        write(line + QLatin1Char('\n'));
}

void Output::json(const QJsonObject &object)
{
    write(jsonText(QJsonDocument(object)));
}

void Output::error(const QString &message)
{
    writeError(m_program + QLatin1String(": ") + printable(message));
}

void Output::remark(
    Emphasis emphasis, const QString &subject, const QString &label, const QString &message)
{
    QString styledLabel = label;
    if (m_styledErrors)
        styledLabel = QLatin1String(emphasis == Emphasis::Error ? "\x1b[1;31m" : "\x1b[1;33m")
                      + label + QLatin1String("\x1b[0m");
    writeError(
        (subject.isEmpty() ? m_program : printable(subject)) + QLatin1String(": ") + styledLabel
        + QLatin1String(": ") + printable(message));
}

void Output::note(const QString &message)
{
    if (!m_json && isatty(STDERR_FILENO) == 1)
        fprintf(stderr, "%s\n", printable(message).toUtf8().constData());
}

bool Output::flush()
{
    if (fflush(stdout) != 0 && m_errno == 0)
        m_errno = errno;
    if (m_errno == 0 || m_errno == EPIPE)
        return true;
    error(QStringLiteral("can't write the output: %1")
              .arg(QString::fromLocal8Bit(strerror(m_errno))));
    return false;
}

void Output::write(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    if (m_errno == 0
        && fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout) != size_t(bytes.size()))
        m_errno = errno;
}

ProgressLine::ProgressLine()
    : m_enabled(takesEscapes(STDERR_FILENO))
{}

ProgressLine::~ProgressLine()
{
    clear();
}

void ProgressLine::show(const QString &text)
{
    if (!m_enabled)
        return;
    fprintf(stderr, "\r\x1b[K%s", printable(text).left(78).toUtf8().constData());
    fflush(stderr);
    m_shown = true;
}

void ProgressLine::clear()
{
    if (!m_shown)
        return;
    fputs("\r\x1b[K", stderr);
    fflush(stderr);
    m_shown = false;
}

} // namespace nk::pm::terminal

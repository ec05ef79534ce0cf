// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QStringList>

#include <mutex>

namespace nk::pm::test {

/// Takes over the log for its scope: the lines of one category, all levels on, in their order;
/// lines of other categories go where they went before. One at a time; lines may come from any
/// thread.
class LogRecorder
{
public:
    explicit LogRecorder(const QByteArray &category);
    ~LogRecorder();

    /// Each line as "critical: text", "warning: text", "info: text" or "debug: text".
    QStringList lines() const;
    /// The lines of one level, without it.
    QStringList lines(const QString &level) const;
    void clear();

private:
    Q_DISABLE_COPY(LogRecorder)
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);

    static LogRecorder *s_current;
    const QByteArray m_category;
    QtMessageHandler m_previous;
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

} // namespace nk::pm::test

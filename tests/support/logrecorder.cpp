// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/logrecorder.h"

#include <QLoggingCategory>

namespace nk::pm::test {

LogRecorder *LogRecorder::s_current = nullptr;

LogRecorder::LogRecorder(const QByteArray &category)
    : m_category(category)
{
    Q_ASSERT(!s_current);
    QLoggingCategory::setFilterRules(QString::fromLatin1(category) + "=true");
    s_current = this;
    m_previous = qInstallMessageHandler(handle);
}

LogRecorder::~LogRecorder()
{
    qInstallMessageHandler(m_previous);
    s_current = nullptr;
    QLoggingCategory::setFilterRules(QString());
}

void LogRecorder::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    LogRecorder *self = s_current;
    if (self->m_category != context.category) {
        if (self->m_previous)
            self->m_previous(type, context, text);
        return;
    }
    static const QHash<int, QString> levels{
        {QtDebugMsg, "debug"},
        {QtInfoMsg, "info"},
        {QtWarningMsg, "warning"},
        {QtCriticalMsg, "critical"}};
    const std::lock_guard<std::mutex> locker(self->m_mutex);
    self->m_lines.append(levels.value(type) + ": " + text);
}

QStringList LogRecorder::lines() const
{
    const std::lock_guard<std::mutex> locker(m_mutex);
    return m_lines;
}

QStringList LogRecorder::lines(const QString &level) const
{
    const QString prefix = level + ": ";
    QStringList texts;
    for (const QString &line : lines()) {
        if (line.startsWith(prefix))
            texts.append(line.mid(prefix.size()));
    }
    return texts;
}

void LogRecorder::clear()
{
    const std::lock_guard<std::mutex> locker(m_mutex);
    m_lines.clear();
}

} // namespace nk::pm::test

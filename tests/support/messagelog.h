// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QLoggingCategory>
#include <QMutex>
#include <QStringList>

namespace nk::pm::test {

/// Records the messages of one logging category, of all levels and threads, for the scope's life.
/// One at a time.
class MessageLog
{
public:
    explicit MessageLog(const char *category)
    {
        instance() = this;
        m_category = category;
        QLoggingCategory::setFilterRules(m_category + ".debug=true");
        m_previous = qInstallMessageHandler(&MessageLog::handle);
    }
    ~MessageLog()
    {
        qInstallMessageHandler(m_previous);
        QLoggingCategory::setFilterRules({});
        instance() = nullptr;
    }

    /// The messages so far, in the form "debug: text".
    QStringList lines() const
    {
        QMutexLocker lock(&m_mutex);
        return m_lines;
    }

private:
    Q_DISABLE_COPY(MessageLog)

    static MessageLog *&instance()
    {
        static MessageLog *log = nullptr;
        return log;
    }

    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
    {
        MessageLog *log = instance();
        if (log->m_category != context.category) {
            log->m_previous(type, context, message);
            return;
        }
        static const QHash<int, QString> names{
            {QtDebugMsg, "debug: "},
            {QtInfoMsg, "info: "},
            {QtWarningMsg, "warning: "},
            {QtCriticalMsg, "critical: "}};
        QMutexLocker lock(&log->m_mutex);
        log->m_lines.append(names.value(type) + message);
    }

    QString m_category;
    QtMessageHandler m_previous = nullptr;
    mutable QMutex m_mutex;
    QStringList m_lines;
};

} // namespace nk::pm::test

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QObject>
#include <QScopedPointer>

class QSocketNotifier;

namespace nk::pm::cli {

/// While it lives, SIGINT, SIGTERM and SIGHUP arrive as a signal of the event loop instead of
/// ending the process; the second one of a kind ends it as usual. At most one object at a time.
class Interrupt : public QObject
{
    Q_OBJECT

public:
    explicit Interrupt(QObject *parent = nullptr);
    ~Interrupt() override;

    /// Number of the first signal that came; 0 if none did.
    int number() const { return m_number; }

Q_SIGNALS:
    void raised();

private:
    void read();

    QScopedPointer<QSocketNotifier> m_notifier;
    int m_number = 0;
};

} // namespace nk::pm::cli

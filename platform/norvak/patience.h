// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/transfer.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>

namespace nk {

/// When a server is given up: once it was silent for too long, sends too slowly, or takes too long
/// in all. Emits once.
class Patience : public QObject
{
    Q_OBJECT

public:
    using Measure = std::function<http::Transfer::Progress()>;

    Patience(const Measure &measure, QObject *parent);

    // Each is off for 0, and can be set at any time.
    void setSilence(std::chrono::milliseconds timeout);
    void setLowestRate(int bytesPerSecond, std::chrono::milliseconds window);
    void setTotal(std::chrono::milliseconds timeout);

    /// What is measured begins again from zero.
    void startOver();
    void stop();

Q_SIGNALS:
    void exhausted();

private:
    void listen();
    void weigh();

    const Measure m_measure;
    QTimer m_silence;
    QTimer m_rate;
    QTimer m_total;
    quint64 m_heard = 0;
    int m_silentTicks = 0;
    int m_lowestRate = 0; ///< bytes per second
    quint64 m_atWindowStart = 0;
    bool m_hasStopped = false;
};

} // namespace nk

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/patience.h"

#include <algorithm>

namespace nk {

namespace {

// Silence is counted in ticks rather than in time: a blocked event loop or a machine that slept
// misses ticks, and so isn't taken for a silent server.
constexpr int ticksPerTimeout = 8;

} // namespace

Patience::Patience(const Measure &measure, QObject *parent)
    : QObject(parent)
    , m_measure(measure)
    , m_silence(this)
    , m_rate(this)
    , m_total(this)
{
    m_silence.setObjectName(QStringLiteral("silence"));
    m_rate.setObjectName(QStringLiteral("rate"));
    m_total.setObjectName(QStringLiteral("total"));
    m_total.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, &Patience::listen);
    connect(&m_rate, &QTimer::timeout, this, &Patience::weigh);
    connect(&m_total, &QTimer::timeout, this, &Patience::exhausted);
}

void Patience::setSilence(std::chrono::milliseconds timeout)
{
    m_silentTicks = 0;
    if (timeout.count() > 0 && !m_hasStopped)
        m_silence.start(std::max(timeout / ticksPerTimeout, std::chrono::milliseconds(1)));
    else
        m_silence.stop();
}

void Patience::setLowestRate(int bytesPerSecond, std::chrono::milliseconds window)
{
    m_lowestRate = bytesPerSecond;
    m_atWindowStart = 0;
    if (bytesPerSecond > 0 && window.count() > 0 && !m_hasStopped)
        m_rate.start(window);
    else
        m_rate.stop();
}

void Patience::setTotal(std::chrono::milliseconds timeout)
{
    if (timeout.count() > 0 && !m_hasStopped)
        m_total.start(timeout);
    else
        m_total.stop();
}

void Patience::startOver()
{
    m_heard = 0;
    m_silentTicks = 0;
    m_atWindowStart = 0;
}

void Patience::stop()
{
    m_hasStopped = true;
    for (QTimer *timer : {&m_silence, &m_rate, &m_total})
        timer->stop();
}

void Patience::listen()
{
    const http::Transfer::Progress now = m_measure();
    m_silentTicks = now.waits || now.bytes != m_heard ? 0 : m_silentTicks + 1;
    m_heard = now.bytes;
    if (m_silentTicks >= ticksPerTimeout)
        Q_EMIT exhausted();
}

// A window counts from the first that began with something heard: until then it is silence.
void Patience::weigh()
{
    const http::Transfer::Progress now = m_measure();
    const quint64 least =
        quint64(m_lowestRate) * quint64(m_rate.intervalAsDuration().count()) / 1000;
    const bool isSlow = !now.waits && m_atWindowStart > 0 && now.bytes - m_atWindowStart < least;
    m_atWindowStart = now.bytes;
    if (isSlow)
        Q_EMIT exhausted();
}

} // namespace nk

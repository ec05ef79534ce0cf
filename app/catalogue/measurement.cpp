// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "measurement.h"

#include "catalogueengine.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QQuickWindow>

#include <chrono>
#include <cstdio>
#include <ctime>

namespace nk::pm::app {
namespace {

constexpr std::chrono::milliseconds tickInterval{1};
constexpr std::chrono::seconds stepDuration{4};
constexpr double nanosecondsPerMillisecond = 1e6;

/// How long this thread has computed, in nanoseconds.
qint64 computed()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000000000 + time.tv_nsec;
}

} // namespace

Measurement::Measurement(CatalogueEngine &engine)
    : m_engine(engine)
    , m_steps{
          {"start", {}},
          {"nothing", {}},
          {"search, four letters", [this] { search(QStringLiteral("banz")); }},
          {"search, three letters", [this] { search(QStringLiteral("ban")); }},
          {"search emptied", [this] { search(QString()); }},
          {"sort by price", [this] { sortBy(QStringLiteral("price")); }},
          {"catalogue order", [this] { sortBy(QString()); }},
          {"new index", [this] { m_engine.provider().refresh(); }},
      }
{
    connect(&m_ticker, &QTimer::timeout, this, &Measurement::tick);
    connect(&m_stepTimer, &QTimer::timeout, this, &Measurement::nextStep);
    watchRows();
    m_ticker.setTimerType(Qt::PreciseTimer);
    m_ticker.start(tickInterval);
    m_stepTimer.start(stepDuration);
    m_lastTick.start();
    m_lastComputed = computed();
}

void Measurement::watchRows()
{
    auto *rows = m_engine.window()->property("packages").value<QAbstractItemModel *>();
    const auto note = [this] { m_haveRowsChanged = true; };
    connect(rows, &QAbstractItemModel::modelReset, this, note);
    connect(rows, &QAbstractItemModel::rowsInserted, this, note);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, note);
    connect(rows, &QAbstractItemModel::rowsMoved, this, note);
}

void Measurement::tick()
{
    const qint64 now = computed();
    m_worstGap = qMax(m_worstGap, m_lastTick.nsecsElapsed());
    m_worstComputed = qMax(m_worstComputed, now - m_lastComputed);
    m_lastTick.restart();
    m_lastComputed = now;
}

void Measurement::nextStep()
{
    const bool isWaiting = m_steps[m_next].begin && !m_haveRowsChanged;
    if (isWaiting || !m_engine.provider().isReady())
        return;
    std::printf(
        "%-24s %8.1f ms %8.1f ms computed\n", m_steps[m_next].name,
        double(m_worstGap) / nanosecondsPerMillisecond,
        double(m_worstComputed) / nanosecondsPerMillisecond);
    std::fflush(stdout);
    m_worstGap = m_worstComputed = 0;
    if (++m_next == m_steps.size()) {
        QCoreApplication::quit();
        return;
    }
    m_haveRowsChanged = false;
    if (m_steps[m_next].begin)
        m_steps[m_next].begin();
}

void Measurement::search(const QString &text)
{
    QMetaObject::invokeMethod(
        m_engine.window(), "search", Q_ARG(QVariant, text), Q_ARG(QVariant, false));
}

void Measurement::sortBy(const QString &field)
{
    QMetaObject::invokeMethod(m_engine.window(), "sortBy", Q_ARG(QVariant, field));
}

} // namespace nk::pm::app

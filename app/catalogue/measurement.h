// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

namespace nk::pm::app {

class CatalogueEngine;

/// Uses the window by itself and prints, for each kind of work, the longest time between two turns
/// of the event loop: as it passed, and as far as this thread computed, which is what counts on a
/// machine that has other things to do. A kind of work is over some seconds after its begin, and
/// not before the rows on screen have changed. Then ends the event loop.
///
///   nkpm_make_catalogue DIR --packages 50000 --keywords 20000 --links 200000
///   QT_QPA_PLATFORM=offscreen norvak-catalogue --local DIR --data OTHER --measure
class Measurement : public QObject
{
    Q_OBJECT

public:
    explicit Measurement(CatalogueEngine &engine);

private:
    struct Step
    {
        const char *name;
        std::function<void()> begin; ///< none: nothing is done, and no row changes
    };

    void watchRows();
    void tick();
    void nextStep();
    void search(const QString &text);
    void sortBy(const QString &field);

    CatalogueEngine &m_engine;
    std::vector<Step> m_steps;
    size_t m_next = 0;
    bool m_haveRowsChanged = false;
    QTimer m_ticker;
    QTimer m_stepTimer;
    QElapsedTimer m_lastTick;
    qint64 m_lastComputed = 0; // nanoseconds
    qint64 m_worstGap = 0;
    qint64 m_worstComputed = 0;
};

} // namespace nk::pm::app

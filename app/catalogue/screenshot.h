// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QImage>
#include <QObject>
#include <QTimer>

#include <functional>

class QQuickItem;
class QQuickWindow;

namespace nk::pm::app {

class CatalogueEngine;

/// Shows one view of the window, waits until everything in it is there, writes a picture of it and
/// ends the event loop: with 0, or with 1 when it couldn't be written or the view never settled.
class Screenshot : public QObject
{
    Q_OBJECT

public:
    Screenshot(CatalogueEngine &engine, const QString &view, const QString &file);

private:
    void look();
    bool isSettled() const;
    void save();

    CatalogueEngine &m_engine;
    const QString m_view;
    const QString m_file;
    QTimer m_timer;
    bool m_isViewShown = false;
    int m_looks = 0;
    int m_settledLooks = 0;
};

/// Hands a picture of what \a window shows to \a use, some frames later; a null one if there is
/// none. QQuickWindow::grabWindow() gives nothing where there is no display.
void grab(QQuickWindow &window, const std::function<void(const QImage &)> &use);

/// Whether nothing at or below \a item waits for a picture to be loaded or is being animated.
bool isStill(const QQuickItem *item);

} // namespace nk::pm::app

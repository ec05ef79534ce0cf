// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "screenshot.h"

#include "catalogueengine.h"

#include <QCoreApplication>
#include <QPainter>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickWindow>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace nk::pm::app {
namespace {

constexpr std::chrono::milliseconds interval{50};
constexpr int patience = 600; // looks
// Results come from the thread pool a little after the change that asked for them.
constexpr int looksBeforeBelief = 6;
constexpr int imageIsLoading = 2; // QQuickImageBase::Loading, whose header is private

} // namespace

bool isStill(const QQuickItem *item)
{
    if (item->inherits("QQuickImageBase") && item->property("status").toInt() == imageIsLoading)
        return false;
    if (item->inherits("QQuickStackView") && item->property("busy").toBool())
        return false;
    const QList<QQuickItem *> children = item->childItems();
    return std::all_of(children.begin(), children.end(), isStill);
}

Screenshot::Screenshot(CatalogueEngine &engine, const QString &view, const QString &file)
    : m_engine(engine)
    , m_view(view)
    , m_file(file)
{
    connect(&m_timer, &QTimer::timeout, this, &Screenshot::look);
    m_timer.start(interval);
}

bool Screenshot::isSettled() const
{
    CatalogueProvider &provider = m_engine.provider();
    return provider.isReady() && !provider.translationsArePending()
           && isStill(m_engine.window()->contentItem());
}

void Screenshot::look()
{
    if (++m_looks > patience) {
        std::fprintf(stderr, "norvak-catalogue: the view never settled\n");
        QCoreApplication::exit(1);
        return;
    }
    m_settledLooks = isSettled() ? m_settledLooks + 1 : 0;
    if (m_settledLooks < looksBeforeBelief)
        return;
    m_settledLooks = 0;
    if (m_isViewShown) {
        save();
        return;
    }
    m_isViewShown = true;
    QMetaObject::invokeMethod(m_engine.window(), "showView", Q_ARG(QVariant, m_view));
}

void Screenshot::save()
{
    m_timer.stop();
    grab(*m_engine.window(), [file = m_file](const QImage &picture) {
        const bool isSaved = picture.save(file);
        if (!isSaved)
            std::fprintf(stderr, "norvak-catalogue: can't write %s\n", qUtf8Printable(file));
        QCoreApplication::exit(isSaved ? 0 : 1);
    });
}

void grab(QQuickWindow &window, const std::function<void(const QImage &)> &use)
{
    const auto result = window.contentItem()->grabToImage();
    if (!result) {
        use(QImage());
        return;
    }
    const auto *key = result.data();
    QObject::connect(
        key, &QQuickItemGrabResult::ready, &window, [result, color = window.color(), use] {
            QImage picture(result->image().size(), QImage::Format_RGB32);
            picture.fill(color);
            QPainter(&picture).drawImage(0, 0, result->image());
            use(picture);
        });
}

} // namespace nk::pm::app

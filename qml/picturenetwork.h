// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QQmlNetworkAccessManagerFactory>

namespace nk::pm {

/// Makes what QML loads pictures with. For an engine that shows files of packages which aren't
/// installed yet: hand it to QQmlEngine::setNetworkAccessManagerFactory(), and keep it as long as
/// the engine loads pictures.
///
/// QML by itself sends several requests down one connection without waiting for the answers, and
/// uses a connection on after a failure. The library's loopback server refuses both, and pictures
/// of a package server would be missing at random.
class PictureNetworkFactory : public QQmlNetworkAccessManagerFactory
{
public:
    /// Any thread, as QML has it.
    QNetworkAccessManager *create(QObject *parent) override;
};

} // namespace nk::pm

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/transfer.h"

#include <QNetworkRequest>

class QNetworkAccessManager;
class QNetworkProxy;
class QNetworkReply;

/// What a network access manager, and the request's TLS configuration, have a say in. On the
/// manager's thread.
namespace nk::http {

/// \a request with what each one has if it doesn't say otherwise, the URL's user included.
QNetworkRequest withDefaults(QNetworkRequest request);
/// \a request with the cookies that the manager's jar has for it, and with the user and password
/// that were given for the server.
QNetworkRequest withKnown(QNetworkRequest request, QNetworkAccessManager *manager);
/// Puts the cookies of the answer to \a request into the manager's jar.
void keepCookies(
    const QNetworkRequest &request, const QNetworkAccessManager &manager, const Head &head);

/// The proxy that the manager, or the application, chose for \a url: one of the kinds that are
/// spoken here, or NoProxy; DefaultProxy if those chosen are all of other kinds. With the user and
/// password that were given for it.
QNetworkProxy proxyFor(const QUrl &url, QNetworkAccessManager *manager);

/// The order for \a request. Nothing if it can't be sent as it is: a header with a line break.
std::optional<TransferOrder> makeOrder(const QNetworkRequest &request, const QNetworkProxy &proxy);

/// Has the manager ask the application for user and password, by its signal. They are kept, so that
/// each is asked for once. False if there is nothing new: the same again would be refused again.
bool askForServer(QNetworkAccessManager *manager, QNetworkReply *reply, const Head &head);
bool askForProxy(QNetworkAccessManager *manager, const QNetworkProxy &proxy, const Head &head);

} // namespace nk::http

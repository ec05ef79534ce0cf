// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include <QNetworkReply>
#include <QString>

namespace nk::http {

/// Why an exchange has no status that could be reported.
enum class Fault {
    None,
    NotHttp,
    NoManager,
    Cancelled,
    HostNotFound,
    ConnectionRefused,
    Unreachable,
    NoProxy,
    ProxyRefused,
    ProxyAuthentication,
    Untrusted,
    TimedOut,
    Cut,
    Malformed,
    HeadTooLarge,
    WithoutEnd,
    Unasked,
    TooLarge,
    SinkRefused,
    UnsafeRedirect,
    TooManyRedirects,
};

/// What a reply tells of \a fault.
QNetworkReply::NetworkError errorOf(Fault fault);
/// For people, in the middle of a sentence.
QString textOf(Fault fault);

/// The same of a complete answer with \a status; its error is that of Qt's own replies.
QNetworkReply::NetworkError errorOf(int status);
QString textOf(int status);

} // namespace nk::http

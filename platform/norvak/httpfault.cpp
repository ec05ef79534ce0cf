// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/httpfault.h"

#include <QCoreApplication>

#include <array>

namespace nk::http {

namespace {

struct FaultRow
{
    Fault fault;
    QNetworkReply::NetworkError error;
    const char *text;
};

constexpr std::array<FaultRow, 21> faults{{
    {Fault::None, QNetworkReply::NoError, ""},
    {Fault::NotHttp, QNetworkReply::ProtocolUnknownError,
     QT_TRANSLATE_NOOP("nk::Request", "the address is none of HTTP")},
    {Fault::NoManager, QNetworkReply::OperationCanceledError,
     QT_TRANSLATE_NOOP("nk::Request", "the network isn't there any more")},
    {Fault::Cancelled, QNetworkReply::OperationCanceledError,
     QT_TRANSLATE_NOOP("nk::Request", "the request was cancelled")},
    {Fault::HostNotFound, QNetworkReply::HostNotFoundError,
     QT_TRANSLATE_NOOP("nk::Request", "the host wasn't found")},
    {Fault::ConnectionRefused, QNetworkReply::ConnectionRefusedError,
     QT_TRANSLATE_NOOP("nk::Request", "the connection was refused")},
    {Fault::Unreachable, QNetworkReply::UnknownNetworkError,
     QT_TRANSLATE_NOOP("nk::Request", "the host can't be reached")},
    {Fault::NoProxy, QNetworkReply::ProxyNotFoundError,
     QT_TRANSLATE_NOOP("nk::Request", "there is no proxy for it")},
    {Fault::ProxyRefused, QNetworkReply::ProxyConnectionRefusedError,
     QT_TRANSLATE_NOOP("nk::Request", "the proxy refused")},
    {Fault::ProxyAuthentication, QNetworkReply::ProxyAuthenticationRequiredError,
     QT_TRANSLATE_NOOP("nk::Request", "the proxy wants another user")},
    {Fault::Untrusted, QNetworkReply::SslHandshakeFailedError,
     QT_TRANSLATE_NOOP("nk::Request", "no secure connection came about")},
    {Fault::TimedOut, QNetworkReply::TimeoutError,
     QT_TRANSLATE_NOOP("nk::Request", "the server didn't answer in time")},
    {Fault::Cut, QNetworkReply::RemoteHostClosedError,
     QT_TRANSLATE_NOOP("nk::Request", "the connection was closed before the end")},
    {Fault::Malformed, QNetworkReply::ProtocolFailure,
     QT_TRANSLATE_NOOP("nk::Request", "the answer is malformed")},
    {Fault::HeadTooLarge, QNetworkReply::ProtocolFailure,
     QT_TRANSLATE_NOOP("nk::Request", "the answer has too many headers")},
    {Fault::WithoutEnd, QNetworkReply::ProtocolFailure,
     QT_TRANSLATE_NOOP("nk::Request", "the answer doesn't tell where it ends")},
    {Fault::Unasked, QNetworkReply::ProtocolFailure,
     QT_TRANSLATE_NOOP("nk::Request", "the answer isn't to what was asked")},
    {Fault::TooLarge, QNetworkReply::UnknownContentError,
     QT_TRANSLATE_NOOP("nk::Request", "the answer is too large")},
    {Fault::SinkRefused, QNetworkReply::UnknownNetworkError,
     QT_TRANSLATE_NOOP("nk::Request", "what came is too large, or can't be stored")},
    {Fault::UnsafeRedirect, QNetworkReply::InsecureRedirectError,
     QT_TRANSLATE_NOOP("nk::Request", "the server redirects to an address that can't be followed")},
    {Fault::TooManyRedirects, QNetworkReply::TooManyRedirectsError,
     QT_TRANSLATE_NOOP("nk::Request", "the server redirects too often")},
}};

} // namespace

QNetworkReply::NetworkError errorOf(Fault fault)
{
    return faults.at(size_t(fault)).error;
}

QString textOf(Fault fault)
{
    return QCoreApplication::translate("nk::Request", faults.at(size_t(fault)).text);
}

QNetworkReply::NetworkError errorOf(int status)
{
    switch (status) {
    case 401:
        return QNetworkReply::AuthenticationRequiredError;
    case 403:
        return QNetworkReply::ContentAccessDenied;
    case 404:
        return QNetworkReply::ContentNotFoundError;
    case 407:
        return QNetworkReply::ProxyAuthenticationRequiredError;
    case 410:
        return QNetworkReply::ContentGoneError;
    case 500:
        return QNetworkReply::InternalServerError;
    case 503:
        return QNetworkReply::ServiceUnavailableError;
    default:
        break;
    }
    if (status >= 500)
        return QNetworkReply::UnknownServerError;
    return status >= 400 ? QNetworkReply::UnknownContentError : QNetworkReply::NoError;
}

QString textOf(int status)
{
    return QCoreApplication::translate("nk::Request", "the server answered with status %1")
        .arg(status);
}

} // namespace nk::http

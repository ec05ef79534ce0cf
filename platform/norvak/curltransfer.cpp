// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/curltransfer.h"

#include <cerrno>

namespace nk::http {

namespace {

constexpr long bufferSize = 64 * 1024;

size_t takeHeaderLine(char *data, size_t, size_t size, void *transfer)
{
    const QByteArray line(data, int(size));
    return static_cast<Transfer *>(transfer)->takeHeaderLine(line) ? size : 0;
}

size_t takeBody(char *data, size_t, size_t size, void *transfer)
{
    switch (static_cast<Transfer *>(transfer)->takeBody(data, int(size))) {
    case Transfer::NothingYet:
        return CURL_WRITEFUNC_PAUSE;
    case Transfer::NoMore:
        return 0;
    case Transfer::All:
        break;
    }
    return size;
}

// Sees the bytes as they came.
int watch(CURL *, curl_infotype type, char *data, size_t size, void *lastByte)
{
    if (type == CURLINFO_DATA_IN && size > 0)
        *static_cast<char *>(lastByte) = data[size - 1];
    return 0;
}

} // namespace

CurlTransfer::CurlTransfer(std::shared_ptr<Transfer> transfer)
    : m_transfer(std::move(transfer))
    , m_handle(curl_easy_init())
{
    if (!m_handle)
        return;
    order(m_transfer->order());
    orderBounds();
    orderTls(m_transfer->order());
    orderProxy(m_transfer->order());
}

void CurlTransfer::order(const TransferOrder &order)
{
    CURL *const h = handle();
    for (const QByteArray &header : order.headers) {
        if (curl_slist *more = curl_slist_append(m_headers.get(), header.constData())) {
            m_headers.release();
            m_headers.reset(more);
        }
    }
    curl_easy_setopt(h, CURLOPT_PRIVATE, this);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, m_error.data());
    curl_easy_setopt(h, CURLOPT_URL, order.url.constData());
    curl_easy_setopt(h, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(h, CURLOPT_HTTPHEADER, m_headers.get());
    curl_easy_setopt(h, CURLOPT_HEADERFUNCTION, &http::takeHeaderLine);
    curl_easy_setopt(h, CURLOPT_HEADERDATA, m_transfer.get());
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, &http::takeBody);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, m_transfer.get());
    curl_easy_setopt(h, CURLOPT_DEBUGFUNCTION, &watch);
    curl_easy_setopt(h, CURLOPT_DEBUGDATA, &m_lastByte);
    curl_easy_setopt(h, CURLOPT_VERBOSE, 1L); // to the function above, nowhere else
}

// What curl may do of its own accord: little. Redirects, credentials and cookies are Request's; the
// environment and .netrc have no say.
void CurlTransfer::orderBounds()
{
    CURL *const h = handle();
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(h, CURLOPT_HTTP09_ALLOWED, 0L);
    curl_easy_setopt(h, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(h, CURLOPT_NETRC, long(CURL_NETRC_IGNORED));
    curl_easy_setopt(h, CURLOPT_BUFFERSIZE, bufferSize);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    // Else removing a transfer waits for its name to be resolved, which no time-out of ours ends.
    curl_easy_setopt(h, CURLOPT_QUICK_EXIT, 1L);
}

void CurlTransfer::orderTls(const TransferOrder &order)
{
    CURL *const h = handle();
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, order.verifiesPeer ? 1L : 0L);
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, order.verifiesPeer ? 2L : 0L);
    curl_easy_setopt(
        h, CURLOPT_SSLVERSION,
        long(order.needsTls13 ? CURL_SSLVERSION_TLSv1_3 : CURL_SSLVERSION_TLSv1_2));
    if (order.authorities.isEmpty())
        return;
    curl_blob authorities{
        const_cast<char *>(order.authorities.constData()), size_t(order.authorities.size()),
        CURL_BLOB_NOCOPY};
    curl_easy_setopt(h, CURLOPT_CAINFO_BLOB, &authorities);
    curl_easy_setopt(h, CURLOPT_CAPATH, nullptr); // the system's would count besides
}

void CurlTransfer::orderProxy(const TransferOrder &order)
{
    CURL *const h = handle();
    curl_easy_setopt(h, CURLOPT_PROXY, order.proxy.constData()); // "" keeps the environment's out
    curl_easy_setopt(h, CURLOPT_NOPROXY, "");
    curl_easy_setopt(h, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    if (order.proxyUser.isEmpty())
        return;
    curl_easy_setopt(h, CURLOPT_PROXYAUTH, long(CURLAUTH_BASIC));
    curl_easy_setopt(h, CURLOPT_PROXYUSERNAME, order.proxyUser.constData());
    curl_easy_setopt(h, CURLOPT_PROXYPASSWORD, order.proxyPassword.constData());
}

void CurlTransfer::end(CURLcode code)
{
    m_transfer->end(faultOf(code), QString::fromUtf8(m_error.data()));
}

Fault CurlTransfer::faultOf(CURLcode code) const
{
    long tunnelStatus = 0;
    long systemError = 0;
    curl_easy_getinfo(handle(), CURLINFO_HTTP_CONNECTCODE, &tunnelStatus);
    curl_easy_getinfo(handle(), CURLINFO_OS_ERRNO, &systemError);
    if (code != CURLE_OK && tunnelStatus >= 300)
        return tunnelStatus == 407 ? Fault::ProxyAuthentication : Fault::ProxyRefused;
    switch (code) {
    case CURLE_OK: // also, in curl 7.88, for chunks that break off between the last two bytes
        return m_lastByte == '\r' && m_transfer->isChunked() ? Fault::Cut : Fault::None;
    case CURLE_COULDNT_RESOLVE_HOST:
        return Fault::HostNotFound;
    case CURLE_COULDNT_RESOLVE_PROXY:
        return Fault::NoProxy;
    case CURLE_PROXY:
        return Fault::ProxyRefused;
    case CURLE_COULDNT_CONNECT:
        return systemError == ECONNREFUSED ? Fault::ConnectionRefused : Fault::Unreachable;
    case CURLE_OPERATION_TIMEDOUT:
        return Fault::TimedOut;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
        return Fault::Cut;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
        return Fault::Untrusted;
    case CURLE_URL_MALFORMAT:
        return Fault::NotHttp;
    default:
        return Fault::Malformed;
    }
}

} // namespace nk::http

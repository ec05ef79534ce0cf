// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "norvak/transfer.h"

#include <curl/curl.h>

#include <array>
#include <memory>

namespace nk::http {

/// A transfer as curl has it: set up for what was ordered, and handing on what comes. For the
/// transfer thread.
class CurlTransfer
{
public:
    explicit CurlTransfer(std::shared_ptr<Transfer> transfer);

    CURL *handle() const { return m_handle.get(); }
    Transfer &transfer() const { return *m_transfer; }
    /// curl has come to an end of it with \a code.
    void end(CURLcode code);

private:
    void order(const TransferOrder &order);
    void orderBounds();
    void orderTls(const TransferOrder &order);
    void orderProxy(const TransferOrder &order);
    Fault faultOf(CURLcode code) const;

    struct Cleaner
    {
        void operator()(CURL *handle) const { curl_easy_cleanup(handle); }
        void operator()(curl_slist *list) const { curl_slist_free_all(list); }
    };

    const std::shared_ptr<Transfer> m_transfer;
    std::array<char, CURL_ERROR_SIZE> m_error{};
    char m_lastByte = 0; ///< that came
    std::unique_ptr<curl_slist, Cleaner> m_headers;
    std::unique_ptr<CURL, Cleaner> m_handle; // goes first
};

} // namespace nk::http

// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#pragma once

#include "support/httptestserver.h"

#include <norvakaccount/service.h>

#include <QNetworkAccessManager>

#include <memory>
#include <optional>

namespace nk::pm::test {

/// A package server in the test's own process, and the service that leads to it.
class LedgerServer
{
public:
    explicit LedgerServer(const QString &uuid = "service-1");

    /// What a request for the ledger gets from now on: 304 if it names this \a etag, else 200. With
    /// an empty \a etag there is none.
    void publish(const QByteArray &ledger, const QByteArray &etag);
    /// What each request for the ledger gets instead; nothing ends that.
    void answerWith(const std::optional<HttpTestAnswer> &answer) { m_override = answer; }
    /// A file for download, by its SHA-224.
    void addFile(const QByteArray &content);
    /// What the server gives for the file \a content.
    void answerFileWith(const QByteArray &content, const HttpTestAnswer &answer);

    nk::account::Service *service() const { return m_service.get(); }
    QNetworkAccessManager *manager() const { return m_manager.get(); }
    HttpTestServer &http() { return m_http; }
    /// The If-None-Match headers of the requests for the ledger; null where there was none.
    QVector<QByteArray> conditions() const;
    /// How many requests there were for the file \a content.
    int downloads(const QByteArray &content) const;

    /// The service and the manager go, as at the end of an application.
    void removeService() { m_service.reset(); }
    void removeManager() { m_manager.reset(); }

private:
    HttpTestAnswer answer(const HttpTestRequest &request) const;
    HttpTestAnswer ledgerAnswer(const HttpTestRequest &request) const;

    HttpTestServer m_http;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::unique_ptr<nk::account::Service> m_service;
    QByteArray m_ledger;
    QByteArray m_etag;
    std::optional<HttpTestAnswer> m_override;
    QHash<QByteArray, HttpTestAnswer> m_files; // by target
};

} // namespace nk::pm::test

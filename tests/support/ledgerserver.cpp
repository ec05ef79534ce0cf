// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "support/ledgerserver.h"

#include "support/ledgerbuilder.h"

namespace nk::pm::test {

namespace {

const QByteArray ledgerTarget = "/base/api/v1/ledger";

QByteArray fileTarget(const QByteArray &content)
{
    return ledgerTarget + '/' + fileHash(content).toHex();
}

} // namespace

LedgerServer::LedgerServer(const QString &uuid)
    : m_http([this](const HttpTestRequest &request) { return answer(request); })
    , m_manager(new QNetworkAccessManager)
    , m_service(new nk::account::Service(uuid, m_http.url("/base/"), m_manager.get()))
{}

void LedgerServer::publish(const QByteArray &ledger, const QByteArray &etag)
{
    m_ledger = ledger;
    m_etag = etag;
}

void LedgerServer::addFile(const QByteArray &content)
{
    answerFileWith(content, HttpTestAnswer::ok(content));
}

void LedgerServer::answerFileWith(const QByteArray &content, const HttpTestAnswer &answer)
{
    m_files[fileTarget(content)] = answer;
}

QVector<QByteArray> LedgerServer::conditions() const
{
    QVector<QByteArray> conditions;
    for (const HttpTestRequest &request : m_http.requests()) {
        if (request.target == ledgerTarget)
            conditions.append(request.headers.value("if-none-match"));
    }
    return conditions;
}

int LedgerServer::downloads(const QByteArray &content) const
{
    const auto &requests = m_http.requests();
    return int(std::count_if(requests.begin(), requests.end(), [&](const auto &request) {
        return request.target == fileTarget(content);
    }));
}

HttpTestAnswer LedgerServer::answer(const HttpTestRequest &request) const
{
    if (request.target == ledgerTarget)
        return m_override ? *m_override : ledgerAnswer(request);
    return m_files.value(request.target, HttpTestAnswer::of(404));
}

HttpTestAnswer LedgerServer::ledgerAnswer(const HttpTestRequest &request) const
{
    if (m_etag.isEmpty())
        return HttpTestAnswer::ok(m_ledger);
    const QByteArray header = "ETag: " + m_etag + "\r\n";
    if (request.headers.value("if-none-match") == m_etag)
        return HttpTestAnswer::of(304, {}, header);
    return HttpTestAnswer::of(200, m_ledger, header);
}

} // namespace nk::pm::test

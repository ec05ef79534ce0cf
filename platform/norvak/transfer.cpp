// SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
// SPDX-License-Identifier: MIT

#include "norvak/transfer.h"

#include <QCoreApplication>
#include <QEvent>

#include <utility>

namespace nk::http {

namespace {

// As much again may be on its way into the sink.
constexpr int heldSize = 512 * 1024;
// An error page is for a line of the log.
constexpr qint64 maximumErrorBody = 64 * 1024;

bool isSuccess(int status)
{
    return status >= 200 && status < 300;
}

} // namespace

Transfer::Transfer(TransferOrder order, QObject *listener)
    : m_order(std::move(order))
    , m_listener(listener)
{}

Transfer::News Transfer::takeNews()
{
    const std::lock_guard lock(m_mutex);
    m_isTold = false;
    return std::exchange(m_news, {});
}

Transfer::Progress Transfer::progress() const
{
    const std::lock_guard lock(m_mutex);
    return {!m_hasBegun || m_news.isHeldBack, m_bytes};
}

void Transfer::abandon()
{
    const std::lock_guard lock(m_mutex);
    m_listener = nullptr;
}

void Transfer::begin()
{
    const std::lock_guard lock(m_mutex);
    m_hasBegun = true;
}

bool Transfer::takeHeaderLine(const QByteArray &line)
{
    const std::lock_guard lock(m_mutex);
    m_bytes += quint64(line.size());
    const bool wasComplete = m_reader.isComplete();
    Fault fault = m_reader.take(line);
    if (fault == Fault::None && !wasComplete && m_reader.isComplete()) {
        fault = faultOf(m_reader.head(), m_order.isConditional);
        m_news.head = m_reader.head();
        tell();
    }
    if (fault != Fault::None)
        m_verdict = fault;
    return fault == Fault::None;
}

bool Transfer::isChunked() const
{
    const std::lock_guard lock(m_mutex);
    return !m_reader.head().value("Transfer-Encoding").isNull();
}

Transfer::Taken Transfer::takeBody(const char *data, int size)
{
    const std::lock_guard lock(m_mutex);
    if (m_news.body.size() + size > heldSize) {
        m_news.isHeldBack = true;
        tell();
        return NothingYet;
    }
    const bool isError = !isSuccess(m_reader.head().status);
    const int taken = isError ? int(qMin<qint64>(size, maximumErrorBody - m_bodySize)) : size;
    m_bytes += quint64(size);
    m_bodySize += taken;
    m_news.body.append(data, taken);
    tell();
    if (taken == size)
        return All;
    m_verdict = Fault::None; // the status is what counts, and it is there
    return NoMore;
}

void Transfer::end(Fault fault, const QString &detail)
{
    const std::lock_guard lock(m_mutex);
    if (m_news.hasEnded)
        return;
    m_news.hasEnded = true;
    m_news.fault = m_verdict.value_or(fault);
    if (m_news.fault == Fault::None && !m_reader.isComplete())
        m_news.fault = Fault::Malformed;
    if (!m_verdict) // else the transport tells of having been stopped
        m_news.detail = detail;
    tell();
}

// Under the mutex, so that the listener can't go meanwhile.
void Transfer::tell()
{
    if (m_listener && !m_isTold)
        QCoreApplication::postEvent(m_listener, new QEvent(QEvent::User));
    m_isTold = true;
}

} // namespace nk::http
